// The label that names a control. Several prescribed captions carry blanks at their ends, which
// would push them out of a column: the text keeps them, the painting does not.
#pragma once

#include <QLabel>

class CaptionLabel : public QLabel
{
    Q_OBJECT
public:
    using QLabel::QLabel;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
};
