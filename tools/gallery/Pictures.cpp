#include "gallery/Pictures.h"

#include "gallery/Measure.h"
#include "gallery/PictureDifference.h"

#include <QApplication>
#include <QDir>
#include <QPainter>
#include <QPalette>
#include <QWidget>

#include <cstdio>

namespace {

using Scheme = DesktopLook::Scheme;

constexpr QRgb desktopColor = 0xff7d8694;
constexpr int desktopMargin = 12;

bool write(const QImage &image, const QString &path)
{
    if (image.save(path))
        return true;
    std::fprintf(stderr, "Cannot write %s\n", qPrintable(path));
    return false;
}

QList<Surroundings> usual(const QString &language)
{
    return { { language, Scheme::Light }, { language, Scheme::Dark } };
}

QList<Surroundings> every(const QString &language)
{
    return usual(language) << Surroundings { language, Scheme::Light, Qt::RightToLeft }
                           << Surroundings { language, Scheme::Dark, Qt::RightToLeft }
                           << Surroundings { language, Scheme::Light, Qt::LeftToRight, 2 }
                           << Surroundings { .language = language,
                                             .scheme = Scheme::Light,
                                             .contrast = DesktopLook::Contrast::High }
                           << Surroundings { .language = language,
                                             .scheme = Scheme::Dark,
                                             .contrast = DesktopLook::Contrast::High };
}

/// One picture of each exhibit below the other's, in columns, each with its name.
QImage contactSheet(const QList<std::pair<QString, QImage>> &pictures)
{
    constexpr int columns = 6;
    constexpr QSize cell(300, 380);
    const int rows = (static_cast<int>(pictures.size()) + columns - 1) / columns;
    QImage sheet(columns * cell.width(), rows * cell.height(), QImage::Format_RGB32);
    sheet.fill(QColor(0xdd, 0xdf, 0xe3));
    QPainter painter(&sheet);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.setPen(Qt::black);
    painter.setFont(QFont(QStringLiteral("DejaVu Sans"), 10));
    for (int i = 0; i < static_cast<int>(pictures.size()); ++i) {
        const auto &[name, image] = pictures[i];
        const QRect area
            = QRect(QPoint(i % columns * cell.width(), i / columns * cell.height()), cell)
                  .adjusted(6, 6, -6, -6);
        painter.drawText(area, Qt::AlignBottom | Qt::AlignHCenter, name);
        const QSize room = area.size() - QSize(0, 22);
        const QSize size = image.size().scaled(room, Qt::KeepAspectRatio).boundedTo(image.size());
        painter.drawImage(QRect(area.topLeft()
                                    + QPoint((room.width() - size.width()) / 2,
                                             (room.height() - size.height()) / 2),
                                size),
                          image);
    }
    return sheet;
}

}

std::vector<ExhibitEntry> allExhibits()
{
    std::vector<ExhibitEntry> result;
    for (const auto &exhibits : { panelExhibits(), menuExhibits(), windowExhibits(),
                                  welcomeExhibits(), previewExhibits() })
        result.insert(result.end(), exhibits.begin(), exhibits.end());
    return result;
}

namespace Gallery {

QImage picture(Exhibit &exhibit, ExhibitEntry::Frame frame, int ratio)
{
    QWidget &view = exhibit.widget();
    const bool isPanel = frame == ExhibitEntry::Frame::Panel;
    // The panel's border is a point wide.
    const QSize panel = view.size() + QSize(2, 2);
    const QSize size = isPanel ? panel + 2 * QSize(desktopMargin, desktopMargin) : view.size();
    QImage image(size * ratio, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(isPanel ? QColor(desktopColor) : view.palette().color(QPalette::Window));
    QPainter painter(&image);
    if (!isPanel) {
        view.render(&painter);
        return image;
    }
    painter.setRenderHint(QPainter::Antialiasing);
    QColor border = view.palette().color(QPalette::WindowText);
    border.setAlphaF(0.22F);
    painter.setPen(border);
    painter.setBrush(view.palette().window());
    const QRectF shape(QPointF(desktopMargin, desktopMargin), panel);
    painter.drawRoundedRect(shape.adjusted(0.5, 0.5, -0.5, -0.5), 11.5, 11.5);
    view.render(&painter, QPoint(desktopMargin + 1, desktopMargin + 1), {}, QWidget::DrawChildren);
    return image;
}

bool shoot(const ShotRequest &request)
{
    bool isWritten = true;
    for (const QString &language : request.languages) {
        const QDir folder(request.folder + u'/' + language);
        folder.mkpath(QStringLiteral("."));
        QList<std::pair<QString, QImage>> sheet;
        const bool isFirst = language == request.languages.first();
        for (const Surroundings &surroundings : isFirst ? every(language) : usual(language)) {
            apply(surroundings);
            for (const ExhibitEntry &entry : allExhibits()) {
                if (!entry.name.contains(request.only))
                    continue;
                const auto exhibit = entry.make(surroundings);
                const QImage image = picture(*exhibit, entry.frame, request.ratio);
                const QString name
                    = QStringLiteral("%1-%2@%3x.png")
                          .arg(entry.name, surroundings.suffix(), QString::number(request.ratio));
                isWritten &= write(image, folder.filePath(name));
                if (surroundings.suffix() == QLatin1String("light"))
                    sheet.append({ entry.name, image });
            }
        }
        if (request.ratio == 1 && !sheet.isEmpty())
            isWritten &= write(contactSheet(sheet),
                               request.folder + QStringLiteral("/sheet-%1.png").arg(language));
    }
    return isWritten;
}

bool measure(const MeasureRequest &request)
{
    int laidOut = 0;
    int faulty = 0;
    for (const QString &language : request.languages) {
        for (const auto direction : { Qt::LeftToRight, Qt::RightToLeft }) {
            // Mirroring adds nothing that another language would change.
            if (direction == Qt::RightToLeft && language != request.languages.first()
                && language != QLatin1String("de"))
                continue;
            const Surroundings surroundings { language, Scheme::Light, direction,
                                              request.textScale };
            apply(surroundings);
            for (const ExhibitEntry &entry : allExhibits()) {
                if (!entry.name.contains(request.only))
                    continue;
                const auto exhibit = entry.make(surroundings);
                const QStringList faults = textFaults(exhibit->widget());
                ++laidOut;
                faulty += faults.isEmpty() ? 0 : 1;
                for (const QString &fault : faults)
                    std::printf("%s, %s-%s: %s\n", qPrintable(entry.name), qPrintable(language),
                                qPrintable(surroundings.suffix()), qPrintable(fault));
            }
        }
    }
    std::printf("%d views laid out at %g %% text size, %d with faults\n", laidOut,
                100 * request.textScale, faulty);
    return faulty == 0 && laidOut > 0;
}

}
