// Helpers for tests that drive the main window and its modal dialogs. Each test
// includes "ui_MainWindow.h" itself: the form's header is made only for a
// source that names it.
#pragma once

#include "GuiTestSupport.h"
#include "SharedStateReset.h"
#include "app/MainWindow.h"
#include "app/PanelStyles.h"
#include "tracking/ComputeSource.h"
#include "tracking/SharedState.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>
#include <libnova/julian_day.h>

#include <cmath>
#include <functional>
#include <memory>
#include <string>

namespace lunaquill::test {

inline QString IniPath() { return SettingsFolder() + "Lunaquill.ini"; }

// Writes a file (by default the settings file), making its folder.
inline void WriteIni(const QByteArray &text, const QString &path = IniPath())
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(text);
}

inline QByteArray ReadIni(const QString &path = IniPath())
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline std::string Format(const char *format, double value)
{
    return QString::asprintf(format, value).toStdString();
}

// A rise or set time as the panels and lists show it: "MM-DD HH:MM" after `prefix`.
inline std::string DateText(const char *prefix, double jd)
{
    ln_date d;
    ln_get_date(jd, &d);
    return QString::asprintf("%s%02d-%02d %02d:%02d", prefix, d.months, d.days, d.hours, d.minutes)
        .toStdString();
}

inline std::string Text(const QAbstractButton *button) { return button->text().toStdString(); }
inline std::string Style(const QWidget *widget) { return widget->styleSheet().toStdString(); }
// The texts of several read-outs, joined by "|".
inline std::string Texts(std::initializer_list<const QAbstractButton *> buttons)
{
    QStringList texts;
    for (const QAbstractButton *button : buttons)
        texts << button->text();
    return texts.join('|').toStdString();
}

template <typename T>
struct Named { using type = T; }; // keeps a lambda from deducing the dialog's class

// Runs `act` on the modal dialog that opens next, then presses `button` of its
// button box (none: `act` closes it).
template <typename Dialog = QDialog>
void WhenOpen(std::function<void(typename Named<Dialog>::type &)> act,
              QDialogButtonBox::StandardButton button = QDialogButtonBox::NoButton)
{
    QTimer::singleShot(0, [=] {
        auto *dialog = qobject_cast<Dialog *>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        act(*dialog);
        if (button != QDialogButtonBox::NoButton)
            dialog->template findChild<QDialogButtonBox *>()->button(button)->click();
    });
}

// Every test starts from zero shared state, in an empty home folder.
class WindowTest : public testing::Test
{
protected:
    void SetUp() override { ResetSharedState(); }

    // A main window over this settings file (nullptr: none), at the minimum
    // size when shown.
    void Open(const char *ini, bool shown = true)
    {
        if (ini)
            WriteIni(ini);
        window = std::make_unique<MainWindow>();
        ui = window->widgets();
        if (shown) {
            window->resize(1640, 960);
            window->show();
            QApplication::processEvents();
        }
    }

    void Tick(int count = 1)
    {
        for (int i = 0; i < count; ++i)
            window->TimerEvent();
    }

    // A panel refresh at once, with every figure.
    void Refresh()
    {
        window->requestForceRefresh();
        window->TimerEvent();
    }

    std::unique_ptr<MainWindow> window;
    Ui::MainWindow *ui = nullptr;
};

} // namespace lunaquill::test
