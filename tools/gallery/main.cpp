// Every view in every state, over fakes:
//   gallery --shots DIR [--only PART] [--language CODE]    as pictures
//   gallery --measure [--only PART] [--language CODE]      finds text that is cut off or covered
//   gallery --compare DIR [--results DIR] [--update]       compares some pictures with stored ones
// The work is shared by two processes, since the scale belongs to a whole one.

#include "gallery/Pictures.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QProcess>

#include <algorithm>
#include <cstdio>

namespace {

void addOptions(QCommandLineParser &options)
{
    const auto add = [&options](const char *name, const char *what, const char *value = "") {
        options.addOption({ QLatin1String(name), QLatin1String(what), QLatin1String(value) });
    };
    options.addHelpOption();
    add("shots", "Writes all pictures.", "folder");
    add("measure", "Finds texts that are cut off or cover each other.");
    add("compare", "Compares a few pictures with those that are stored there.", "folder");
    add("update", "Stores these pictures anew.");
    add("results", "Where pictures that differ are written.", "folder");
    add("only", "Exhibits whose name holds this.", "part");
    add("language", "In this language alone.", "code");
    add("scale", "This half of the work: 1 or 2 pixels a point, or times the size of texts.",
        "number");
}

/// Both halves at once; 0 if both went well.
int runHalves(const QCoreApplication &application)
{
    std::vector<std::unique_ptr<QProcess>> halves;
    for (const char *scale : { "1", "2" }) {
        auto &half = *halves.emplace_back(std::make_unique<QProcess>());
        half.setProcessChannelMode(QProcess::ForwardedChannels);
        half.start(application.applicationFilePath(),
                   application.arguments().mid(1)
                       << QStringLiteral("--scale") << QLatin1String(scale));
    }
    int worst = 0;
    for (const auto &half : halves) {
        const bool ended = half->waitForFinished(-1) && half->exitStatus() == QProcess::NormalExit;
        worst = std::max(worst, ended ? half->exitCode() : 1);
    }
    return worst;
}

/// The platform without a screen cannot do what dialogs and the recorder ask, and says so.
void printWarning(QtMsgType, const QMessageLogContext &, const QString &text)
{
    if (!text.contains(QLatin1String("plugin does not support")))
        std::fprintf(stderr, "%s\n", qPrintable(text));
}

bool run(const QCommandLineParser &options, int scale)
{
    const QString only = options.value(QStringLiteral("only"));
    const QStringList languages = options.isSet(QStringLiteral("language"))
        ? options.values(QStringLiteral("language"))
        : Gallery::languages();
    if (options.isSet(QStringLiteral("measure")))
        return Gallery::measure({ only, languages, static_cast<double>(scale) });
    if (options.isSet(QStringLiteral("compare"))) {
        using Mode = Gallery::CompareRequest::Mode;
        return Gallery::compare(
            { options.isSet(QStringLiteral("update")) ? Mode::Update : Mode::Compare,
              options.value(QStringLiteral("compare")), options.value(QStringLiteral("results")),
              scale });
    }
    return Gallery::shoot({ options.value(QStringLiteral("shots")), only, languages, scale });
}

}

int main(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    QCommandLineParser options;
    addOptions(options);
    const bool isUnderstood = options.parse(arguments);
    const bool hasTask = options.isSet(QStringLiteral("shots"))
        || options.isSet(QStringLiteral("measure")) || options.isSet(QStringLiteral("compare"));
    if (!isUnderstood || !hasTask || options.isSet(QStringLiteral("help"))) {
        const QCoreApplication application(argc, argv);
        std::printf("%s\n%s", qPrintable(options.errorText()), qPrintable(options.helpText()));
        return isUnderstood && hasTask ? 0 : 2;
    }
    if (!options.isSet(QStringLiteral("scale")))
        return runHalves(QCoreApplication(argc, argv));
    const int scale = options.value(QStringLiteral("scale")).toInt();
    Gallery::prepare(options.isSet(QStringLiteral("measure")) ? 1 : scale);
    const QApplication application(argc, argv);
    qInstallMessageHandler(printWarning);
    return run(options, scale) ? 0 : 1;
}
