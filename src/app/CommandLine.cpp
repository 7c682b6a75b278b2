#include "app/CommandLine.h"

#include "base/FilePath.h"
#include "platform/linux/transfer/DropFormats.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

namespace {

constexpr int misuse = 2; // As GNU's own programs end.

// Of QGuiApplication, QApplication and the X11 plugin; one or two dashes before them.
constexpr std::array<std::string_view, 15> toolkitValues {
    "platform",        "platformpluginpath",
    "platformtheme",   "plugin",
    "qwindowgeometry", "geometry",
    "qwindowicon",     "icon",
    "qwindowtitle",    "title",
    "display",         "name",
    "style",           "stylesheet",
    "session",
};
constexpr std::array<std::string_view, 5> toolkitSwitches { "reverse", "widgetcount", "nograb",
                                                            "dograb", "sync" };

constexpr char help[] = "Usage: vantle [OPTION] [FILE or ADDRESS]...\n"
                        "A shelf for things on their way from one application to another.\n"
                        "\n"
                        "Starts Vantle, or shows the panel of the one that runs, and puts what is\n"
                        "named on the shelf.\n"
                        "\n"
                        "  -h, --help     show this help and end\n"
                        "  -v, --version  show the version and end\n"
                        "  --             what follows is files, whatever it begins with\n";

template<size_t count>
bool holds(const std::array<std::string_view, count> &names, std::string_view name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

}

std::optional<int> CommandLine::answered(const QByteArrayList &arguments)
{
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QByteArray &argument = arguments.at(i);
        if (argument == "--")
            break;
        if (!argument.startsWith('-') || argument == "-")
            continue;
        if (argument == "--version" || argument == "-v") {
            std::puts("vantle " VANTLE_VERSION);
            return 0;
        }
        if (argument == "--help" || argument == "-h") {
            std::fputs(help, stdout);
            return 0;
        }
        const QByteArray name = argument.mid(argument.startsWith("--") ? 2 : 1).split('=').first();
        const std::string_view word(name.constData(), static_cast<size_t>(name.size()));
        if (holds(toolkitValues, word)) {
            i += argument.contains('=') ? 0 : 1;
        } else if (!holds(toolkitSwitches, word)) {
            std::fprintf(stderr, "vantle: unknown option '%s'\nTry 'vantle --help'.\n",
                         argument.constData());
            return misuse;
        }
    }
    return {};
}

QList<Address> CommandLine::urls(const QByteArrayList &arguments, const QByteArray &folder)
{
    QList<Address> urls;
    bool onlyFiles = false;
    for (const QByteArray &argument : arguments) {
        if (!onlyFiles && argument.startsWith('-'))
            onlyFiles = argument == "--";
        else if (argument.startsWith("file:") || argument.contains("://"))
            urls += DropFormats::urls(argument);
        else if (!argument.isEmpty())
            urls.append(FilePath::toUrl(FilePath::standardized(
                argument.startsWith('/') ? argument : folder + '/' + argument)));
    }
    return urls;
}
