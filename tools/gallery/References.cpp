#include "gallery/PictureDifference.h"
#include "gallery/Pictures.h"

#include <QDir>

#include <algorithm>
#include <cstdio>

// The few pictures that are kept beside the tests.

namespace {

using Scheme = DesktopLook::Scheme;

struct Reference
{
    const char *exhibit;
    int ratio = 1;
    Surroundings surroundings {};

    QString fileName() const
    {
        return QStringLiteral("%1-%2-%3@%4x.png")
            .arg(QLatin1String(exhibit), surroundings.language, surroundings.suffix(),
                 QString::number(ratio));
    }
};

std::vector<Reference> references()
{
    const Surroundings dark { .scheme = Scheme::Dark };
    const Surroundings mirrored { .direction = Qt::RightToLeft };
    const Surroundings german { .language = QStringLiteral("de") };
    const Surroundings japanese { .language = QStringLiteral("ja") };
    const Surroundings large { .language = QStringLiteral("fr"), .textScale = 2 };
    return {
        { "empty" },
        { "full" },
        { "full", 2, dark },
        { "selected", 1, dark },
        { "pictures", 2 },
        { "toast", 1, german },
        { "targeted" },
        { "long-names-hover", 1, mirrored },
        { "shelf-menu" },
        { "row-menu-file", 1, german },
        { "rename-file", 1, japanese },
        { "settings-top", 1, german },
        { "settings-bottom", 1, mirrored },
        { "empty", 1, large },
        { "welcome-2", 1, japanese },
        { "tab", 2, dark },
        { "preview-folder", 1, german },
    };
}

bool compareOne(const QImage &now, const QString &name, const Gallery::CompareRequest &request)
{
    const PictureDifference difference(QImage(request.folder + u'/' + name), now);
    if (difference.isSmall())
        return true;
    std::printf("%s: mean distance %.3f (at most %.3f), %.2f %% clearly different (at most "
                "%.2f %%)\n",
                qPrintable(name), difference.mean, PictureDifference::mostMean,
                100 * difference.clear, 100 * PictureDifference::mostClear);
    QDir().mkpath(request.results);
    now.save(request.results + u'/' + name);
    difference.map.save(request.results + QStringLiteral("/difference-") + name);
    return false;
}

}

namespace Gallery {

bool compare(const CompareRequest &request)
{
    const auto exhibits = allExhibits();
    int made = 0;
    int different = 0;
    QDir().mkpath(request.folder);
    for (const Reference &reference : references()) {
        if (reference.ratio != request.ratio)
            continue;
        apply(reference.surroundings);
        const auto entry
            = std::ranges::find(exhibits, QLatin1String(reference.exhibit), &ExhibitEntry::name);
        Q_ASSERT(entry != exhibits.end());
        const auto exhibit = entry->make(reference.surroundings);
        const QImage now = picture(*exhibit, entry->frame, request.ratio);
        const bool isFine = request.mode == CompareRequest::Mode::Update
            ? now.save(request.folder + u'/' + reference.fileName())
            : compareOne(now, reference.fileName(), request);
        different += isFine ? 0 : 1;
        ++made;
    }
    std::printf("%d pictures at %dx, %d different\n", made, request.ratio, different);
    return different == 0;
}

}
