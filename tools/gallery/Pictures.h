#pragma once

#include "gallery/Exhibit.h"
#include "gallery/Surroundings.h"

#include <QImage>
#include <QString>

namespace Gallery {

/// What an exhibit looks like in that frame, at that many pixels a point.
QImage picture(Exhibit &exhibit, ExhibitEntry::Frame frame, int ratio);

struct ShotRequest
{
    QString folder;
    QString only; // Exhibits whose name holds this.
    QStringList languages;
    int ratio = 1;
};

/// Writes "<folder>/<language>/<exhibit>-<light or dark>[-rtl][-large][-contrast]@<ratio>x.png",
/// and a sheet with one picture of each exhibit for each language. From right to left,
/// with texts of twice the size, and in high contrast, in the first of the languages only.
/// True if all were written.
bool shoot(const ShotRequest &request);

struct CompareRequest
{
    enum class Mode { Compare, Update };

    Mode mode = Mode::Compare;
    QString folder; // Of the stored pictures.
    QString results; // Where pictures that differ go, each with a map of its difference.
    int ratio = 1;
};

/// Makes the few pictures that are kept, and compares them with the stored ones or
/// stores them. True if all are alike.
bool compare(const CompareRequest &request);

struct MeasureRequest
{
    QString only;
    QStringList languages;
    double textScale = 1;
};

/// Lays every exhibit out in every language, and prints what textFaults() finds.
/// True if that is nothing.
bool measure(const MeasureRequest &request);

}
