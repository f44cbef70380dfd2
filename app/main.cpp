#include "MainWindow.h"

#include <QApplication>

#include <clocale>

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    // Qt takes the locale from the environment; every number the program
    // prints or reads uses a decimal point, whatever the language.
    setlocale(LC_NUMERIC, "C");
    MainWindow window;
    window.show();
    return application.exec();
}
