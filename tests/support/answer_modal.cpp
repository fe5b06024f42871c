#include "tests/support/answer_modal.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QMessageBox>

#include <gtest/gtest.h>

#include <utility>

namespace {

constexpr int kLookEveryMs = 10;

QString captionOf(const QAbstractButton& button)
{
    return button.text().remove(QLatin1Char('&'));
}

SeenModal describe(const QDialog& dialog)
{
    SeenModal seen;
    seen.title = dialog.windowTitle();
    if (const auto* box = qobject_cast<const QMessageBox*>(&dialog)) {
        seen.text = box->text();
    } else {
        QStringList lines;
        for (const QLabel* label : dialog.findChildren<QLabel*>()) {
            lines << label->text();
        }
        seen.text = lines.join(QLatin1Char('\n'));
    }
    for (const QAbstractButton* button : dialog.findChildren<QAbstractButton*>()) {
        seen.buttons << captionOf(*button);
    }
    return seen;
}

void pressButton(QDialog& dialog, const QString& caption)
{
    for (QAbstractButton* button : dialog.findChildren<QAbstractButton*>()) {
        if (captionOf(*button) == caption) {
            button->click();
            return;
        }
    }
    ADD_FAILURE() << "no button \"" << caption.toStdString() << "\" in the box \""
                  << dialog.windowTitle().toStdString() << "\"";
    dialog.reject();
}

} // namespace

AnswerModal::AnswerModal(const QString& buttonText)
    : AnswerModal([buttonText](QDialog& dialog) { pressButton(dialog, buttonText); })
{
}

AnswerModal::AnswerModal(std::function<void(QDialog&)> answer)
    : m_answer(std::move(answer))
{
    connect(&m_timer, &QTimer::timeout, this, &AnswerModal::look);
    m_timer.start(kLookEveryMs);
}

QString AnswerModal::title() const
{
    return m_seen.empty() ? QString() : m_seen.back().title;
}
QString AnswerModal::text() const
{
    return m_seen.empty() ? QString() : m_seen.back().text;
}

void AnswerModal::look()
{
    auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (dialog == nullptr || !dialog->isVisible()) {
        m_last.clear();
        return;
    }
    if (dialog == m_last) {
        return;
    }
    m_last = dialog;
    m_seen.push_back(describe(*dialog));
    m_answer(*dialog);
}
