// Answers the modal boxes of the code under test, so that exec() returns, and remembers what they
// said.
#pragma once

#include <QDialog>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <vector>

struct SeenModal
{
    QString title;
    QString
        text; ///< a message box: its text; any other dialog: the texts of its labels, a line each
    QStringList buttons; ///< captions, without the "&" of a shortcut
};

/// While it lives, every modal dialog that becomes active is answered once. Make it before the call
/// that opens the box. A box without the wanted button fails the test and is rejected, so that no
/// test hangs. GUI thread.
class AnswerModal : public QObject
{
public:
    /// Presses the button with this caption ("确 定").
    explicit AnswerModal(const QString& buttonText);
    /// Hands the dialog to a function of the test instead (file dialogs, forms). The function must
    /// cause the dialog to close; after it the dialog is not answered again.
    explicit AnswerModal(std::function<void(QDialog&)> answer);

    const std::vector<SeenModal>& seen() const { return m_seen; }
    int count() const { return static_cast<int>(m_seen.size()); }
    /// Of the last box; empty before the first one.
    QString title() const;
    QString text() const;

private:
    void look();

    std::function<void(QDialog&)> m_answer;
    std::vector<SeenModal> m_seen;
    QPointer<QWidget> m_last;
    QTimer m_timer;
};
