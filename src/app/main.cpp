#include "app/AppDelegate.h"
#include "app/CommandLine.h"
#include "platform/linux/LinuxDesktop.h"
#include "platform/linux/session/ApplicationService.h"
#include "platform/linux/session/JsonPreferences.h"
#include "platform/linux/session/SingleInstance.h"
#include "platform/linux/session/SystemLanguages.h"
#include "platform/linux/session/XdgDirectories.h"
#include "store/AppPaths.h"
#include "store/LegacyMigration.h"
#include "views/look/PlainText.h"
#include "views/look/ProgramIcon.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QSessionManager>
#include <QShortcut>
#include <QStandardPaths>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>

namespace {

/// Where icons, sounds and texts may lie: beside the bin folder that holds the
/// program, in the installation's own place, or next to the program.
QStringList resourcePlaces()
{
    const QString program = QCoreApplication::applicationDirPath();
    return { program + QStringLiteral("/../share/vantle"), QStringLiteral(VANTLE_DATA_DIR),
             program };
}

int run(QApplication &application, const Directories &directories, SingleInstance &instance,
        const QList<Address> &files)
{
    const QStringList places = resourcePlaces();
    const auto bundle = Localizer::findBundle(places);
    if (!bundle)
        qFatal("unable to find bundle named Vantle_Vantle");
    const QString resources = *bundle + QStringLiteral("/..");

    LinuxDesktop desktop(directories, resources, AppPaths(directories).dataDir + "/dropped");
    const Desktop interfaces = desktop.interfaces();
    LegacyMigration::runIfNeeded(interfaces.preferences,
                                 JsonPreferences::predecessor(directories.config),
                                 AppPaths(directories));
    Localizer texts(*bundle, SystemLanguages::fromEnvironment());
    AppDelegate delegate(interfaces, texts);
    // quit() would ask the windows first, and the panel refuses to close.
    delegate.onQuit = [] { QCoreApplication::exit(); };
    delegate.applicationDidFinishLaunching();
    instance.deliverTo({
        .activate = [&delegate] { delegate.activate(); },
        .open = [&delegate](const QList<Address> &urls) { delegate.openUrls(urls); },
        .perform = [&delegate](const QString &action) { delegate.performAction(action); },
        .addToShelf = [&delegate](const QList<Address> &urls,
                                  const QString &text) { return delegate.addToShelf(urls, text); },
    });
    if (!files.isEmpty())
        delegate.openUrls(files);
    return application.exec();
}

/// Who starts programs from a menu sees no standard error: a window says it, until it is
/// closed or a while has passed.
int endWith(const char *key)
{
    constexpr std::chrono::seconds longEnough(15);
    const auto bundle = Localizer::findBundle(resourcePlaces());
    if (!bundle)
        return 1;
    const Localizer texts(*bundle, SystemLanguages::fromEnvironment());
    PlainLabel window(texts.text(QLatin1String(key)));
    window.setWindowTitle(texts.text(QStringLiteral("app_name")));
    window.setWindowIcon(programIcon(*bundle + QStringLiteral("/..")));
    window.setMargin(24);
    const QShortcut close(QKeySequence(Qt::Key_Escape), &window, &window, &QWidget::close);
    QApplication::setQuitOnLastWindowClosed(true);
    QTimer::singleShot(longEnough, &window, &QWidget::close);
    window.show();
    QApplication::exec();
    return 1;
}

/// A session that is restored starts what its user has chosen to start with it, and the
/// switch in the settings is that choice: the session manager must not start it as well.
void refuseSessionRestart(const QGuiApplication &application)
{
    const auto never
        = [](QSessionManager &manager) { manager.setRestartHint(QSessionManager::RestartNever); };
    QObject::connect(&application, &QGuiApplication::commitDataRequest, &application, never);
    QObject::connect(&application, &QGuiApplication::saveStateRequest, &application, never);
}

int endWithoutServer()
{
    std::fputs("Vantle needs an X server: it does not run on this platform.\n", stderr);
    return 1;
}

}

int main(int argc, char **argv)
{
    if (const auto status
        = CommandLine::answered(QByteArrayList(argv + std::min(argc, 1), argv + argc)))
        return *status;
    constexpr const char *choice = "QT_QPA_PLATFORM";
    const QByteArray chosen = qgetenv(choice);
    if (!LinuxDesktop::chooseWindowSystem())
        return endWithoutServer();
    QApplication application(argc, argv);
    // What is started from here chooses for itself.
    chosen.isEmpty() ? qunsetenv(choice) : qputenv(choice, chosen);
    QApplication::setApplicationName(QStringLiteral("Vantle"));
    QApplication::setApplicationVersion(QStringLiteral(VANTLE_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("app.vantleapp.Vantle"));
    QApplication::setQuitOnLastWindowClosed(false);
    refuseSessionRestart(application);
    const Directories directories = XdgDirectories::fromEnvironment();
    SingleInstance instance(directories.state);
    // The toolkit has taken its own arguments out by now.
    const auto files = CommandLine::urls(QByteArrayList(argv + std::min(argc, 1), argv + argc),
                                         QFile::encodeName(QDir::currentPath()));
    switch (instance.acquire(files)) {
    case SingleInstance::Result::First:
        return run(application, directories, instance, files);
    case SingleInstance::Result::HandedOver:
        return 0;
    case SingleInstance::Result::HeldElsewhere:
        return endWith("running_elsewhere");
    case SingleInstance::Result::NoAnswer:
        return endWith("running_silent");
    }
    return 1;
}
