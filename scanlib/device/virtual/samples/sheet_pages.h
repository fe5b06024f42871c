// The contents of the sample sheets. All names, firms and numbers are invented.
#pragma once

#include <QImage>

namespace samples {

QImage noticePage();
QImage expensesPage();
QImage picturePage();
QImage letterPage();
QImage agreementPage();
QImage formFrontPage();
QImage formBackPage();

} // namespace samples
