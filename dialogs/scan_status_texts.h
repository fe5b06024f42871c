// What the reports of a running scan read like, for the progress dialog and the message box. No
// widgets.
#pragma once

#include <QString>

enum ScanStatusCode : int
{
    kScanStarted = -1,
    kScanProgress = 0,
    kScanFinished = 1
};

struct ScanStatusTexts
{
    QString title;
    QString text;
};

/// Both texts are empty for any other code. ocrPage is -1 when no text recognition runs: its line
/// is then left out.
ScanStatusTexts scanStatusTexts(int code, int scanPage, int dealPage, int ocrPage);
