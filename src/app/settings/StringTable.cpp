#include "app/settings/StringTable.h"

#include <optional>

namespace {

class Parser
{
public:
    explicit Parser(QStringView text)
        : m_text(text)
    {
    }

    QHash<QString, QString> table()
    {
        QHash<QString, QString> entries;
        for (;;) {
            const auto key = quoted();
            if (!key || !take(u'='))
                return entries;
            const auto value = quoted();
            if (!value || !take(u';'))
                return entries;
            entries.insert(*key, *value);
        }
    }

private:
    bool atEnd() const { return m_at >= m_text.size(); }
    QStringView rest() const { return m_text.sliced(m_at); }

    void skipTo(QStringView end)
    {
        const qsizetype found = m_text.indexOf(end, m_at + 2);
        m_at = found < 0 ? m_text.size() : found + end.size();
    }

    void skipSpaceAndComments()
    {
        while (!atEnd()) {
            if (m_text[m_at].isSpace())
                ++m_at;
            else if (rest().startsWith(u"//"))
                skipTo(u"\n");
            else if (rest().startsWith(u"/*"))
                skipTo(u"*/");
            else
                return;
        }
    }

    bool take(char16_t character)
    {
        skipSpaceAndComments();
        if (atEnd() || m_text[m_at] != character)
            return false;
        ++m_at;
        return true;
    }

    std::optional<QString> quoted()
    {
        if (!take(u'"'))
            return std::nullopt;
        QString result;
        while (!atEnd()) {
            const QChar character = m_text[m_at++];
            if (character == u'"')
                return result;
            if (character != u'\\')
                result += character;
            else if (!atEnd())
                result += escaped();
        }
        return std::nullopt;
    }

    QChar escaped()
    {
        const QChar character = m_text[m_at++];
        switch (character.unicode()) {
        case u'n':
            return u'\n';
        case u'r':
            return u'\r';
        case u't':
            return u'\t';
        case u'u':
        case u'U': {
            bool isNumber = false;
            const auto code = m_text.mid(m_at, 4).toUShort(&isNumber, 16);
            if (!isNumber)
                return character;
            m_at += 4;
            return { code };
        }
        default:
            return character;
        }
    }

    QStringView m_text;
    qsizetype m_at = 0;
};

/// One conversion, read at a percent sign: %, an optional position, and a kind.
struct Conversion
{
    enum class Kind { Unknown, Percent, Text, Integer };

    Kind kind = Kind::Unknown;
    qsizetype size = 1; // Of its characters, the percent sign included.
    std::optional<qsizetype> position; // From 1.
};

Conversion conversionAt(QStringView text)
{
    Conversion conversion;
    qsizetype digits = 1;
    while (digits < text.size() && text[digits] >= u'0' && text[digits] <= u'9')
        ++digits;
    qsizetype at = 1;
    if (digits > 1 && digits < text.size() && text[digits] == u'$') {
        conversion.position = text.sliced(1, digits - 1).toInt();
        at = digits + 1;
    }
    const QStringView kind = text.sliced(at);
    const auto become = [&](Conversion::Kind known, qsizetype size) {
        conversion.kind = known;
        conversion.size = at + size;
    };
    if (kind.startsWith(u'@'))
        become(Conversion::Kind::Text, 1);
    else if (kind.startsWith(u"lld"))
        become(Conversion::Kind::Integer, 3);
    else if (kind.startsWith(u'd'))
        become(Conversion::Kind::Integer, 1);
    else if (kind.startsWith(u'%') && !conversion.position)
        become(Conversion::Kind::Percent, 1);
    return conversion;
}

bool isInteger(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return true;
    default:
        return false;
    }
}

std::optional<QString> converted(Conversion::Kind kind, const QVariant &argument)
{
    const bool fits
        = kind == Conversion::Kind::Integer ? isInteger(argument) : argument.canConvert<QString>();
    return fits ? std::optional(argument.toString()) : std::nullopt;
}

}

QHash<QString, QString> StringTable::parse(const QString &text)
{
    return Parser(text).table();
}

QString StringTable::format(const QString &text, const QVariantList &arguments)
{
    QString result;
    qsizetype next = 0; // Of the arguments that are taken in turn.
    qsizetype at = 0;
    while (at < text.size()) {
        if (text[at] != u'%') {
            result += text[at++];
            continue;
        }
        const QStringView rest = QStringView(text).sliced(at);
        const Conversion conversion = conversionAt(rest);
        const QStringView itself = rest.first(conversion.size);
        at += conversion.size;
        if (conversion.kind == Conversion::Kind::Unknown) {
            result += itself;
        } else if (conversion.kind == Conversion::Kind::Percent) {
            result += u'%';
        } else {
            const qsizetype index = conversion.position ? *conversion.position - 1 : next++;
            const auto value = converted(conversion.kind, arguments.value(index));
            result += value ? *value : itself.toString();
        }
    }
    return result;
}
