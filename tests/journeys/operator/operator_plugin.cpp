// Hands and eyes inside the running application: a plugin that Qt loads when the environment asks
// for it. Over a local socket it takes one request a connection and answers with text:
//
//   show                every control: name|value|enabled, a line each
//   set NAME|VALUE      brings the control to its page and sets it by keys, as an operator does
//   press NAME          clicks the button after the answer, since a dialog may open
//
// With JOURNEY_STALL each window keeps the application busy for so many ms while it comes up.
// A control that cannot be seen or is disabled is refused. The application itself is unchanged.
#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGenericPlugin>
#include <QLabel>
#include <QLineEdit>
#include <QSlider>
#include <QSocketNotifier>
#include <QSpinBox>
#include <QTabWidget>
#include <QThread>
#include <QTimer>
#include <QtTest>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>

namespace {

/// Its value as one text; null for what is no control of the application's own.
QString valueOf(QWidget* widget)
{
    if (auto* list = qobject_cast<QComboBox*>(widget)) {
        return list->currentText();
    }
    if (auto* number = qobject_cast<QAbstractSpinBox*>(widget)) {
        return number->text();
    }
    if (auto* slider = qobject_cast<QSlider*>(widget)) {
        return QString::number(slider->value());
    }
    if (auto* button = qobject_cast<QAbstractButton*>(widget)) {
        return button->isCheckable() ? QString::number(int(button->isChecked())) : QString();
    }
    if (auto* edit = qobject_cast<QLineEdit*>(widget)) {
        return edit->text().isNull() ? QStringLiteral("") : edit->text();
    }
    return widget->objectName() == QLatin1String("label_Blank")
        ? static_cast<QLabel*>(widget)->text()
        : QString();
}

QString show()
{
    QStringList lines;
    for (QWidget* widget : QApplication::allWidgets()) {
        const QString name = widget->objectName();
        const QString value = valueOf(widget);
        if (!name.isEmpty() && !name.startsWith(QLatin1String("qt_")) && !value.isNull()
            && widget->window()->inherits("MainWindow")) {
            lines << name + '|' + value + '|' + QString::number(int(widget->isEnabled()));
        }
    }
    lines.sort();
    return lines.join('\n');
}

QWidget* find(const QString& name)
{
    for (QWidget* window : { QApplication::activeModalWidget(), QApplication::activeWindow() }) {
        QWidget* const found = window != nullptr ? window->findChild<QWidget*>(name) : nullptr;
        if (found != nullptr) {
            return found;
        }
    }
    return nullptr;
}

void bringForward(QWidget* widget)
{
    for (QWidget* page = widget; page->parentWidget() != nullptr; page = page->parentWidget()) {
        if (auto* tabs = qobject_cast<QTabWidget*>(page->parentWidget()->parentWidget())) {
            tabs->setCurrentWidget(page);
        }
    }
    widget->setFocus();
}

void typeInto(QWidget* widget, const QString& value)
{
    QTest::keyClick(widget, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(widget, Qt::Key_Delete);
    for (const QChar c : value) {
        if (c.unicode() < 0x80) {
            QTest::keyClick(widget, c.toLatin1());
        } else {
            QInputMethodEvent event;
            event.setCommitString(c);
            QApplication::sendEvent(widget, &event);
        }
    }
}

void setByKeys(QWidget* widget, const QString& value)
{
    if (auto* list = qobject_cast<QComboBox*>(widget)) {
        QTest::keyClick(list, Qt::Key_Home);
        for (int i = 0; i < list->count() && list->currentText() != value; ++i) {
            QTest::keyClick(list, Qt::Key_Down);
        }
    } else if (auto* slider = qobject_cast<QSlider*>(widget)) {
        QTest::keyClick(slider, Qt::Key_Home);
        for (int i = slider->minimum(); i < value.toInt(); ++i) {
            QTest::keyClick(slider, Qt::Key_Right);
        }
    } else if (qobject_cast<QAbstractButton*>(widget) != nullptr) {
        if (valueOf(widget) != value) {
            QTest::keyClick(widget, Qt::Key_Space);
        }
    } else {
        typeInto(widget, value);
    }
}

QString answer(const QString& request)
{
    const QString argument = request.section(' ', 1);
    if (request == QLatin1String("show")) {
        return show();
    }
    QWidget* const widget = find(argument.section('|', 0, 0));
    if (widget == nullptr) {
        return QStringLiteral("no such control");
    }
    bringForward(widget);
    if (!widget->isVisible() || !widget->isEnabled()) {
        return QStringLiteral("not usable");
    }
    if (request.startsWith(QLatin1String("press "))) {
        QTimer::singleShot(0, widget, [widget] { QTest::keyClick(widget, Qt::Key_Space); });
        return QStringLiteral("ok");
    }
    const QString wanted = argument.section('|', 1);
    setByKeys(widget, wanted);
    const QString got = valueOf(widget);
    return got == wanted ? QStringLiteral("ok") : QStringLiteral("shows ") + got;
}

class Operator : public QObject
{
public:
    explicit Operator(const QByteArray& path)
    {
        sockaddr_un address {};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, path.constData(), sizeof address.sun_path);
        m_socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        if (::bind(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0
            || ::listen(m_socket, 4) != 0) {
            qFatal("operator: %s: %s", path.constData(), std::strerror(errno));
        }
        auto* notifier = new QSocketNotifier(m_socket, QSocketNotifier::Read, this);
        connect(notifier, &QSocketNotifier::activated, this, [this] { serve(); });
    }
    ~Operator() override { ::close(m_socket); }

private:
    void serve() const
    {
        const int peer = ::accept(m_socket, nullptr, nullptr);
        char request[4096];
        const ssize_t got = ::read(peer, request, sizeof request);
        if (got > 0) {
            const QByteArray reply =
                answer(QString::fromUtf8(request, static_cast<int>(got))).toUtf8();
            static_cast<void>(::send(
                peer, reply.constData(), static_cast<std::size_t>(reply.size()), MSG_NOSIGNAL));
        }
        ::close(peer);
    }

    int m_socket = -1;
};

/// What the other threads report meanwhile is heard before what the display has to say.
class Stall : public QObject
{
public:
    explicit Stall(unsigned long ms)
        : m_ms(ms)
    {
    }
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        const auto* widget = qobject_cast<QWidget*>(watched);
        if (event->type() == QEvent::Show && widget != nullptr && widget->isWindow()) {
            QMetaObject::invokeMethod(
                this,
                [this] {
                    QThread::msleep(m_ms); // the window is on the screen, and jobs have begun
                    QCoreApplication::sendPostedEvents();
                    QThread::msleep(m_ms); // so is what they have brought up
                },
                Qt::QueuedConnection);
        }
        return false;
    }

private:
    const unsigned long m_ms;
};

} // namespace

class OperatorPlugin : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "operator.json")

public:
    QObject* create(const QString&, const QString&) override
    {
        // the event loop is not there yet
        QTimer::singleShot(0, this, [] {
            auto* hands = new Operator(qgetenv("JOURNEY_OPERATOR"));
            hands->setParent(qApp);
            if (qEnvironmentVariableIsSet("JOURNEY_STALL")) {
                auto* stall = new Stall(qgetenv("JOURNEY_STALL").toULong());
                stall->setParent(qApp);
                qApp->installEventFilter(stall);
            }
        });
        return new QObject;
    }
};

#include "operator_plugin.moc"
