#include "dialogs/scan_status_texts.h"

ScanStatusTexts scanStatusTexts(int code, int scanPage, int dealPage, int ocrPage)
{
    const bool recognises = ocrPage != -1;
    switch (code) {
    case kScanStarted:
        return { QStringLiteral("扫描中..."), QStringLiteral("\n扫描开始") };
    case kScanProgress:
        // KEPT: a line break ends the text with recognition, none ends the text without.
        if (recognises) {
            return { QStringLiteral("扫描中..."),
                QStringLiteral("已扫描页数:%1\n已处理页数:%2\n已识别页数:%3\n")
                    .arg(scanPage)
                    .arg(dealPage)
                    .arg(ocrPage) };
        }
        return { QStringLiteral("扫描中..."),
            QStringLiteral("已扫描页数:%1\n已处理页数:%2").arg(scanPage).arg(dealPage) };
    case kScanFinished:
        // KEPT: the totals read "共" with recognition and "一共" without.
        if (recognises) {
            return { QStringLiteral("扫描完成"),
                QStringLiteral("共扫描页数:%1\n共处理页数:%2\n共识别页数:%3\n")
                    .arg(scanPage)
                    .arg(dealPage)
                    .arg(ocrPage) };
        }
        return { QStringLiteral("扫描完成"),
            QStringLiteral("一共扫描页数:%1\n一共处理页数:%2").arg(scanPage).arg(dealPage) };
    default:
        return {};
    }
}
