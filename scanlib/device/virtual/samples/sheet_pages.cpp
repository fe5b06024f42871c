#include "scanlib/device/virtual/samples/sheet_pages.h"

#include "scanlib/device/virtual/samples/sheet_paper.h"

#include <QFont>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>
#include <QString>
#include <QStringList>

#include <cmath>

namespace samples {

namespace {

constexpr int kMargin = 300;
constexpr int kTextWidth = kWidth - 2 * kMargin;
const QColor kInk(25, 25, 30);
const QColor kStampRed(200, 25, 30);

QFont font(const char* family, double points, bool bold = false)
{
    QFont result(QString::fromUtf8(family));
    result.setPixelSize(static_cast<int>(points * kDpi / 72));
    result.setBold(bold);
    return result;
}

QFont serif(double points, bool bold = false)
{
    return font("Noto Serif CJK SC", points, bold);
}

QFont sans(double points, bool bold = false)
{
    return font("Noto Sans CJK SC", points, bold);
}

/// Returns the y below the text.
int paragraph(QPainter& painter, int y, const char* text, int flags = Qt::AlignJustify)
{
    const QRect room(kMargin, y, kTextWidth, kHeight);
    QRect used;
    painter.setPen(kInk);
    painter.drawText(room, Qt::TextWordWrap | flags, QString::fromUtf8(text), &used);
    return used.bottom() + painter.fontMetrics().lineSpacing() / 2;
}

int title(QPainter& painter, int y, const char* text)
{
    painter.setFont(sans(22, true));
    return paragraph(painter, y, text, Qt::AlignHCenter) + 60;
}

/// A round seal: text along the upper arc, a star in the middle.
void stamp(QPainter& painter, QPointF centre, const char* text)
{
    painter.save();
    painter.translate(centre);
    painter.rotate(-8);
    const double radius = 240; // 41 mm across
    painter.setOpacity(0.85);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(kStampRed, 14));
    painter.drawEllipse(QPointF(0, 0), radius, radius);
    painter.setFont(serif(15, true));
    const QString letters = QString::fromUtf8(text);
    const double step = 250.0 / letters.size();
    for (int i = 0; i < letters.size(); ++i) {
        painter.save();
        painter.rotate(-125 + step * (i + 0.5));
        painter.drawText(QRectF(-60, -radius + 22, 120, 90), Qt::AlignCenter, letters.mid(i, 1));
        painter.restore();
    }
    QPainterPath star;
    for (int i = 0; i < 5; ++i) {
        const double angle = (-90 + i * 144) * M_PI / 180;
        const QPointF point(75 * std::cos(angle), 75 * std::sin(angle));
        i == 0 ? star.moveTo(point) : star.lineTo(point);
    }
    star.closeSubpath();
    star.setFillRule(Qt::WindingFill);
    painter.setPen(Qt::NoPen);
    painter.setBrush(kStampRed);
    painter.drawPath(star);
    painter.restore();
}

int table(QPainter& painter, int y, const QList<QStringList>& rows, const QList<double>& shares)
{
    constexpr int kRowHeight = 130;
    painter.setPen(QPen(kInk, 4));
    for (int r = 0; r < rows.size(); ++r) {
        double x = kMargin;
        painter.setFont(sans(11, r == 0));
        for (int c = 0; c < rows[r].size(); ++c) {
            const QRectF cell(x, y + r * kRowHeight, shares[c] * kTextWidth, kRowHeight);
            if (r == 0) {
                painter.fillRect(cell, QColor(222, 228, 236));
            }
            painter.drawRect(cell);
            painter.drawText(cell.adjusted(20, 0, -20, 0), Qt::AlignCenter, rows[r][c]);
            x += cell.width();
        }
    }
    return y + static_cast<int>(rows.size()) * kRowHeight + 80;
}

} // namespace

QImage noticePage()
{
    QImage page = blankPage();
    QPainter painter(&page);
    int y = title(painter, 330, "关于档案室搬迁的通知");
    painter.setFont(serif(14));
    y = paragraph(painter, y, "各部门：");
    y = paragraph(painter, y,
        "　　为改善保管条件，档案室将于六月十二日由旧楼一层迁至新楼三层东侧。搬迁期间"
        "（六月十日至六月十四日）暂停借阅，急需查阅者请提前两个工作日登记。");
    y = paragraph(
        painter, y, "　　请各部门在六月五日前将已借出的卷宗归还，并按下列要求整理待移交的材料：");
    y = paragraph(painter, y, "　　一、纸质文件去除订书钉和回形针，按页码顺序排列；");
    y = paragraph(painter, y, "　　二、双面文件不得拆分，破损页须先行修补；");
    y = paragraph(painter, y, "　　三、每盒附目录一份，注明页数、密级和保管期限。");
    y = paragraph(painter, y,
        "　　扫描工作由信息组统一安排，分辨率不低于 300 dpi，成品为双层 PDF 和 OFD 两种格式。"
        "联系人：林一舟，分机 6028。");
    y = paragraph(painter, y + 120, "青禾档案管理中心　　　　", Qt::AlignRight);
    paragraph(painter, y, "二〇二五年五月二十日　　　　", Qt::AlignRight);
    stamp(painter, { kWidth - 720.0, y - 20.0 }, "青禾档案管理中心");
    return page;
}

QImage expensesPage()
{
    QImage page = blankPage();
    QPainter painter(&page);
    int y = title(painter, 330, "差旅费用明细表");
    painter.setFont(sans(11));
    y = paragraph(painter, y, "部门：信息组　　姓名：苏晚晴　　编号：CL-2025-0417　　单位：元")
        + 20;
    const auto row = [](const char* text) { return QString::fromUtf8(text).split('|'); };
    y = table(painter, y,
        { row("日期|地点|项目|单据张数|金额"), row("04-07|河州|火车票|2|386.50"),
            row("04-07|河州|市内交通|5|73.00"), row("04-08|河州|住宿|1|420.00"),
            row("04-08|河州|资料复印|3|58.60"), row("04-09|南屏|汽车票|1|45.00"),
            row("04-09|南屏|餐费|2|96.00"), row("04-10|南屏|火车票|1|193.50"),
            row("合计|||15|1272.60") },
        { 0.15, 0.2, 0.25, 0.18, 0.22 });
    painter.setFont(serif(13));
    y = paragraph(painter, y, "金额大写：壹仟贰佰柒拾贰元陆角整");
    y = paragraph(painter, y,
        "说明：所附单据均已编号粘贴，遗失的一张车票由同行人员证明。审核后请于每月二十五日前"
        "交财务室，逾期并入下月办理。");
    painter.setFont(sans(12));
    paragraph(painter, y + 160, "经办人：苏晚晴　　　审核：郑予安　　　批准：＿＿＿＿＿＿");
    return page;
}

QImage picturePage()
{
    QImage page = blankPage();
    QPainter painter(&page);
    painter.setRenderHint(QPainter::Antialiasing);
    const int y = title(painter, 280, "山间水库 · Reservoir in the hills");
    const QRectF frame(kMargin, y, kTextWidth, 1250);
    painter.save();
    painter.setClipRect(frame);
    QLinearGradient sky(frame.topLeft(), frame.bottomLeft());
    sky.setColorAt(0, QColor(60, 110, 190));
    sky.setColorAt(0.55, QColor(245, 205, 160));
    painter.fillRect(frame, sky);
    QRadialGradient sun(frame.center() + QPointF(350, -180), 260);
    sun.setColorAt(0, QColor(255, 250, 225));
    sun.setColorAt(0.3, QColor(255, 235, 180, 200));
    sun.setColorAt(1, QColor(255, 220, 150, 0));
    painter.fillRect(frame, sun);
    for (int layer = 0; layer < 4; ++layer) {
        QPainterPath hills(frame.bottomLeft());
        for (double x = 0; x <= frame.width(); x += 8) {
            const double height = 560 - layer * 110
                + 90 * std::sin(x / (260.0 - 40 * layer) + layer)
                + 25 * std::sin(x / 61.0 + 3 * layer) + 6 * std::sin(x / 9.0);
            hills.lineTo(frame.left() + x, frame.bottom() - height);
        }
        hills.lineTo(frame.bottomRight());
        QLinearGradient slope(0, frame.bottom() - 650, 0, frame.bottom());
        const QColor tone(105 - 22 * layer, 130 - 20 * layer, 140 - 30 * layer);
        slope.setColorAt(0, tone.lighter(125));
        slope.setColorAt(1, tone.darker(135));
        painter.setPen(Qt::NoPen);
        painter.setBrush(slope);
        painter.drawPath(hills);
    }
    QLinearGradient water(0, frame.bottom() - 200, 0, frame.bottom());
    water.setColorAt(0, QColor(190, 190, 185));
    water.setColorAt(1, QColor(40, 80, 110));
    painter.fillRect(QRectF(frame.left(), frame.bottom() - 200, frame.width(), 200), water);
    painter.setPen(QPen(QColor(255, 240, 210, 90), 3));
    for (int i = 0; i < 60; ++i) {
        const double wx = frame.left() + (i * 397) % static_cast<int>(frame.width());
        const double wy = frame.bottom() - 190 + (i * 53) % 180;
        painter.drawLine(QPointF(wx, wy), QPointF(wx + 60 + i, wy));
    }
    painter.restore();
    painter.setFont(serif(13));
    int below = paragraph(painter, y + 1310,
        "图一　清晨的水库。拍摄于大坝南侧观景台，右侧山脊后为新修的环库步道，全长约七公里。");
    below = paragraph(painter, below,
        "Figure 1. The reservoir in the early morning, seen from the platform south of the dam. "
        "The "
        "path around the lake was finished last autumn.");
    paragraph(painter, below,
        "　　水位全年变化不超过四米，丰水期自五月持续到九月。库区沿岸设有三处观测点，每日"
        "八时、十四时和二十时各记录一次水温与能见度。");
    return page;
}

QImage letterPage()
{
    QImage page = blankPage();
    QPainter painter(&page);
    painter.setFont(serif(13));
    int y = paragraph(painter, 330, "Larkfield Paper Works\n14 Mill Lane, Eastbrook\n3 March 2025");
    y = paragraph(painter, y + 80, "Dear Ms Halloran,");
    y = paragraph(painter, y,
        "Thank you for the samples that reached us on Tuesday. We have run forty sheets of each "
        "weight through our feeder and measured the thickness at nine points. The 80 gram stock "
        "was "
        "even throughout; two sheets of the 120 gram stock were slightly curled at one corner, "
        "which may well have happened on the road.");
    y = paragraph(painter, y,
        "We would like to order 12 boxes of the lighter paper and 4 boxes of the heavier one, to "
        "be "
        "delivered before the end of the month. Please quote order number 7719-B on the invoice "
        "and "
        "send it to the address above.");
    y = paragraph(painter, y,
        "One question remains. Your data sheet gives the brightness as 94 percent, the label on "
        "the "
        "box says 92. Which of the two is right? Our archive asks for at least 93.");
    y = paragraph(painter, y, "With kind regards,");
    painter.setFont(serif(20));
    y = paragraph(painter, y + 60, "T. Oakes");
    painter.setFont(serif(13));
    paragraph(painter, y, "Tobias Oakes\nPurchasing");
    return page;
}

QImage agreementPage()
{
    QImage page = blankPage();
    QPainter painter(&page);
    int y = title(painter, 330, "设备保养协议");
    painter.setFont(serif(13));
    for (const char* text : { "甲方：云岭印务有限公司", "乙方：拾光仪器服务部",
             "第一条　乙方每季度对甲方的八台送纸设备进行一次清洁和校准，更换磨损的搓纸轮和分离垫。",
             "第二条　接到故障通知后，乙方应在四小时内答复，两个工作日内派人到场。",
             "第三条　年度费用为人民币九千六百元，分两次支付，发票随付款提供。",
             "第四条　保养记录一式两份，写明日期、设备编号、计数器读数和更换的零件，双方签字。",
             // NOLINTNEXTLINE(bugprone-suspicious-missing-comma): one clause
             "第五条　本协议自签字之日起生效，有效期一年；期满前三十日双方均未提出异议的，"
             "自动延续一年。" }) {
        y = paragraph(painter, y, text) + 15;
    }
    painter.setFont(sans(12));
    paragraph(painter, y + 240, "甲方（盖章）：　　　　　　　　　　　乙方（盖章）：");
    stamp(painter, { kMargin + 560.0, y + 330.0 }, "云岭印务有限公司");
    stamp(painter, { kMargin + 1560.0, y + 320.0 }, "拾光仪器服务部");
    return page;
}

QImage formFrontPage()
{
    QImage page = blankPage();
    QPainter painter(&page);
    int y = title(painter, 330, "阅览证申请表　APPLICATION");
    const auto row = [](const char* text) { return QString::fromUtf8(text).split('|'); };
    y = table(painter, y,
        { row("项目 Item|内容 Entry"), row("姓名 Name|顾知微"), row("单位 Office|云岭印务有限公司"),
            row("电话 Phone|010-5555 0186"), row("用途 Purpose|地方志资料查阅"),
            row("期限 Valid|2025-07-01 至 2026-06-30") },
        { 0.35, 0.65 });
    painter.setFont(serif(12));
    paragraph(painter, y,
        "请用黑色签字笔填写。背面为阅览须知，签字表示已经阅读并同意遵守。\n"
        "Please write in black ink. The rules are on the back.");
    return page;
}

QImage formBackPage()
{
    QImage page = blankPage();
    QPainter painter(&page);
    int y = title(painter, 330, "阅览须知");
    painter.setFont(serif(13));
    for (const char* text : { "1. 进入阅览室请存放随身物品，只可携带铅笔和纸张。",
             "2. 每次借阅不超过三卷，阅毕交还后方可另借。",
             "3. 不得折叠、涂改、拆散卷宗，翻页请从右上角轻揭。",
             "4. 需要复制的，填写复制单交工作人员办理，不得自行拍照。",
             "5. The reading room closes at 17:30. Volumes are handed back by 17:15." }) {
        y = paragraph(painter, y, text) + 20;
    }
    return page;
}

} // namespace samples
