// Times in the GUI thread of the main window, without a display: reading a settings file and
// applying it, writing it, and the slowest answer of any control to one change, painting included.
// The scanner library is the installed one; where a change calls into it, that call is counted too.
//
//   bench_settings [ROUNDS]     needs the installation and an empty data root
//
// Prints "read_ms=", "write_ms=", "change_ms=" (the worst control's median), "control=", "all=".
#include "app/common.h"
#include "mainwindow/mainwindow.h"

#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QSpinBox>
#include <QTabWidget>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <map>

namespace {

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double millisecondsOf(const std::function<void()>& work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

/// Changes the control to its next value; false for a widget that is no setting.
bool change(QWidget* widget, int round)
{
    if (auto* list = qobject_cast<QComboBox*>(widget)) {
        list->setCurrentIndex((list->currentIndex() + 1) % std::max(1, list->count()));
    } else if (auto* slider = qobject_cast<QSlider*>(widget)) {
        slider->setValue(slider->minimum() + round % (slider->maximum() - slider->minimum()));
    } else if (auto* number = qobject_cast<QSpinBox*>(widget)) {
        number->setValue(number->minimum() + round % (number->maximum() - number->minimum()));
    } else if (auto* decimal = qobject_cast<QDoubleSpinBox*>(widget)) {
        decimal->setValue(0.1 * (1 + round % 50));
    } else if (auto* box = qobject_cast<QCheckBox*>(widget)) {
        box->toggle();
    } else if (auto* choice = qobject_cast<QRadioButton*>(widget)) {
        for (QAbstractButton* button : choice->group()->buttons()) {
            if (!button->isChecked()) {
                button->setChecked(true);
                break;
            }
        }
    } else if (auto* edit = qobject_cast<QLineEdit*>(widget)) {
        edit->setText(QString::number(round));
    } else {
        return widget->objectName().contains(QLatin1String("SetDefaultBtn"))
            && (static_cast<QPushButton*>(widget)->click(), true);
    }
    return true;
}

/// Median of every control of the first two pages and the log list.
std::map<std::string, double> changes(MainWindow& window, int rounds)
{
    std::map<std::string, double> times;
    auto* tabs = window.findChild<QTabWidget*>(QStringLiteral("tabWidget"));
    for (int page = 0; page < 2; ++page) {
        tabs->setCurrentIndex(page);
        QApplication::processEvents();
        for (QWidget* widget : tabs->widget(page)->findChildren<QWidget*>()) {
            const QString name = widget->objectName();
            if (name.isEmpty() || name.startsWith(QLatin1String("qt_")) || widget->isHidden()
                || name == QLatin1String("filePathEdit")) {
                continue;
            }
            std::vector<double> measured;
            bool isSetting = true;
            for (int round = 0; round < rounds && isSetting; ++round) {
                measured.push_back(millisecondsOf([&] {
                    isSetting = change(widget, round);
                    QApplication::processEvents(); // what follows from it, painting too
                }));
            }
            if (isSetting) {
                times[name.toStdString()] = median(measured);
            }
        }
    }
    return times;
}

int measure(int rounds)
{
    MainWindow window;
    std::vector<_tagdevicesInfomationItem> devices;
    window.getOnLineScanDevices(devices);
    if (devices.empty()) {
        std::cerr << "no device\n";
        return 1;
    }
    window.onSelScanDeviceSig(QString::fromStdString(devices.front().name));
    std::vector<double> reads;
    std::vector<double> writes;
    for (int round = 0; round <= rounds; ++round) { // the first one warms the disk
        const double write = millisecondsOf([&] { window.writeSetting(); });
        const double read = millisecondsOf([&] { window.readSetting(); });
        if (round > 0) {
            writes.push_back(write);
            reads.push_back(read);
        }
    }
    const std::map<std::string, double> times = changes(window, rounds);
    const auto worst = std::max_element(times.begin(), times.end(),
        [](const auto& a, const auto& b) { return a.second < b.second; });
    for (const auto& [name, time] : times) {
        std::cerr << name << ' ' << time << '\n';
    }
    std::fprintf(stderr, "read %.2f to %.2f, write %.2f to %.2f ms\n",
        *std::min_element(reads.begin(), reads.end()),
        *std::max_element(reads.begin(), reads.end()),
        *std::min_element(writes.begin(), writes.end()),
        *std::max_element(writes.begin(), writes.end()));
    std::printf("figures read_ms=%.2f write_ms=%.2f change_ms=%.2f control=%s all=%zu\n",
        median(reads), median(writes), worst->second, worst->first.c_str(), times.size());
    std::fflush(nullptr);
    window.ThreadKeyOver();
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    return measure(argc > 1 ? std::max(1, std::atoi(argv[1])) : 21);
}
