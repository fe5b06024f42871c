#include "mainwindow/forms/caption_label.h"

#include <QStyleOption>
#include <QStylePainter>

QSize CaptionLabel::sizeHint() const
{
    const QFontMetrics metrics = fontMetrics();
    const QMargins margins = contentsMargins();
    return { metrics.horizontalAdvance(text().trimmed()) + margins.left() + margins.right(),
        metrics.height() + margins.top() + margins.bottom() };
}

QSize CaptionLabel::minimumSizeHint() const
{
    return sizeHint();
}

void CaptionLabel::paintEvent(QPaintEvent* /*event*/)
{
    QStyleOption option;
    option.initFrom(this);
    QStylePainter painter(this);
    painter.drawItemText(contentsRect(),
        int(QStyle::visualAlignment(layoutDirection(), alignment())), option.palette, isEnabled(),
        text().trimmed(), foregroundRole());
}
