#pragma once

#include "fileops/ThumbnailLoader.h"
#include "store/ShelfItem.h"

#include <QHash>
#include <QList>
#include <QPixmap>
#include <QUuid>

#include <functional>
#include <memory>

/// The pictures of the rows that can be seen: a row has its loader for as long as
/// it shows. Main thread.
class RowThumbnails
{
public:
    /// A picture came; its row is to be painted again.
    std::function<void(const QUuid &)> onPicture;

    /// Without it every row keeps the icon of its type.
    void setSource(Thumbnails *source) { m_source = source; }

    /// Exactly these rows show now. `size` is the edge length in points.
    void show(const QList<ShelfItem> &items, double size, double scale);
    /// Null where the icon of the type is all there is. Rows that are on their way
    /// out keep what was made of them.
    QPixmap picture(const ShelfItem &item, double size, double scale) const;

private:
    struct Row
    {
        Row(Thumbnails &source, const QUrl &url, int maxPixel)
            : loader(source, url, maxPixel)
        {
        }
        ThumbnailLoader loader;
        QPixmap picture;
        Ticket subscription;
    };

    Row &rowOf(const ShelfItem &item, int maxPixel);

    Thumbnails *m_source = nullptr;
    QHash<QUuid, std::shared_ptr<Row>> m_rows;
};
