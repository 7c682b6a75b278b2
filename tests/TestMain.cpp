#include <QApplication>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

/// A warning that Qt prints in a test is a fault of the test or of the program.
void failOnWarning(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    if (type == QtDebugMsg || type == QtInfoMsg)
        return;
    // A virtual screen has no font configuration of its own, which Qt remarks on once.
    if (text.contains(QLatin1String("fontconfig"), Qt::CaseInsensitive))
        return;
    ADD_FAILURE() << "Qt: " << qPrintable(text);
}

}

int main(int argc, char **argv)
{
    const QTemporaryDir home;
    const QByteArray path = home.path().toUtf8();
    for (const char *name : { "HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_STATE_HOME",
                              "XDG_CACHE_HOME", "XDG_RUNTIME_DIR" })
        qputenv(name, path);
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    qInstallMessageHandler(failOnWarning);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
