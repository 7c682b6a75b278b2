// The least that a tray program of this toolkit can be: an icon with a menu.
//   bench_bare_tray ICON
#include <QApplication>
#include <QMenu>
#include <QSystemTrayIcon>

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QMenu menu;
    menu.addAction(QStringLiteral("Show"));
    menu.addSeparator();
    menu.addAction(QStringLiteral("Quit"), &application, &QApplication::quit);
    QSystemTrayIcon icon(QIcon(QApplication::arguments().value(1)));
    icon.setContextMenu(&menu);
    icon.setToolTip(QStringLiteral("Bare"));
    icon.show();
    return QApplication::exec();
}
