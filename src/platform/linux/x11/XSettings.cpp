#include "platform/linux/x11/XSettings.h"

#include "platform/linux/x11/Xcb.h"

#include <QtEndian>

#include <optional>

namespace {

constexpr quint32 longestProperty = 1 << 16; // 32-bit units.

enum Type { Integer = 0, String = 1, Colour = 2 };

/// Takes values from the front of the property, each padded to four bytes; none
/// when it is too short for them.
class Reader
{
public:
    explicit Reader(const QByteArray &bytes)
        : m_bytes(bytes)
        , m_bigEndian(bytes.startsWith('\1'))
    {
    }

    template<typename T>
    std::optional<T> number()
    {
        if (m_bytes.size() - m_position < qsizetype(sizeof(T)))
            return {};
        const char *from = m_bytes.constData() + m_position;
        m_position += sizeof(T);
        return m_bigEndian ? qFromBigEndian<T>(from) : qFromLittleEndian<T>(from);
    }

    std::optional<QByteArray> text(quint32 length)
    {
        const qsizetype padded = (qsizetype(length) + 3) & ~qsizetype(3);
        if (m_bytes.size() - m_position < padded)
            return {};
        const QByteArray result = m_bytes.mid(m_position, length);
        m_position += padded;
        return result;
    }

private:
    const QByteArray &m_bytes;
    bool m_bigEndian;
    qsizetype m_position = 0;
};

std::optional<QVariant> value(Reader &reader, quint8 type)
{
    switch (type) {
    case Integer:
        if (const auto number = reader.number<qint32>())
            return QVariant(*number);
        return {};
    case String:
        if (const auto length = reader.number<quint32>()) {
            if (const auto text = reader.text(*length))
                return QVariant(QString::fromUtf8(*text));
        }
        return {};
    case Colour:
        return reader.number<quint64>() ? std::optional(QVariant()) : std::nullopt;
    default:
        return {};
    }
}

QByteArray property(xcb_connection_t *connection, int screen)
{
    Xcb::Atoms atoms(connection);
    const auto owner
        = Xcb::selectionOwner(connection, atoms("_XSETTINGS_S" + QByteArray::number(screen)));
    const auto name = atoms("_XSETTINGS_SETTINGS");
    const auto cookie = xcb_get_property(connection, 0, owner, name, name, 0, longestProperty);
    const auto reply = Xcb::owned(xcb_get_property_reply(connection, cookie, nullptr));
    if (!reply || reply->format != 8)
        return {};
    return { static_cast<const char *>(xcb_get_property_value(reply.get())),
             xcb_get_property_value_length(reply.get()) };
}

}

ManagedSettings XSettings::parse(const QByteArray &property)
{
    Reader reader(property);
    ManagedSettings result;
    reader.number<quint32>(); // Byte order, which the reader has looked at.
    reader.number<quint32>(); // Serial number.
    const quint32 count = reader.number<quint32>().value_or(0);
    for (quint32 i = 0; i < count; ++i) {
        const auto type = reader.number<quint8>();
        reader.number<quint8>(); // Unused.
        const auto length = reader.number<quint16>();
        const auto name = reader.text(length.value_or(0));
        const auto serial = reader.number<quint32>();
        if (!type || !length || !name || !serial)
            break;
        const auto setting = value(reader, *type);
        if (!setting)
            break;
        result.insert(*name, *setting);
    }
    return result;
}

ManagedSettings XSettings::read()
{
    int screen = 0;
    xcb_connection_t *connection = xcb_connect(nullptr, &screen);
    ManagedSettings result;
    if (xcb_connection_has_error(connection) == 0)
        result = parse(property(connection, screen));
    xcb_disconnect(connection);
    return result;
}
