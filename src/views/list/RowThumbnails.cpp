#include "views/list/RowThumbnails.h"

#include <utility>

void RowThumbnails::show(const QList<ShelfItem> &items, double size, double scale)
{
    if (!m_source)
        return;
    const auto before = std::exchange(m_rows, {});
    for (const ShelfItem &item : items) {
        if (item.link)
            continue; // Nobody makes a picture of an address.
        if (const auto known = before.constFind(item.id); known != before.constEnd())
            m_rows.insert(item.id, *known);
        rowOf(item, static_cast<int>(size * scale)).loader.load(item.url, size, scale);
    }
}

RowThumbnails::Row &RowThumbnails::rowOf(const ShelfItem &item, int maxPixel)
{
    auto &row = m_rows[item.id];
    if (!row) {
        row = std::make_shared<Row>(*m_source, item.url, maxPixel);
        row->subscription = row->loader.image.subscribe(
            [this, id = item.id, &picture = row->picture](const QImage &image) {
                const bool wasNone = picture.isNull();
                picture = QPixmap::fromImage(image);
                if (onPicture && !(wasNone && picture.isNull()))
                    onPicture(id);
            });
    }
    return *row;
}

QPixmap RowThumbnails::picture(const ShelfItem &item, double size, double scale) const
{
    if (const auto row = m_rows.value(item.id))
        return row->picture;
    const bool hasNone = !m_source || item.link;
    return hasNone ? QPixmap()
                   : QPixmap::fromImage(m_source->cached(item.url, static_cast<int>(size * scale)));
}
