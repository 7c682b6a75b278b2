#pragma once

#include "platform/Address.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <optional>

/// The address of a web link as it was typed or read. QUrl alone would not do:
/// it changes escapes and the numbers of a host, and what it makes of some
/// addresses it refuses to read again. The text is what is stored, compared and
/// shown.
class WebAddress
{
public:
    WebAddress(const QUrl &url) // NOLINT(google-explicit-constructor): a link is given as either.
        : m_text(QString::fromLatin1(url.toEncoded()))
    {
    }

    /// What the state file may hold: anything that is an address by its scheme, or
    /// that QUrl reads. None for other text.
    static std::optional<WebAddress> stored(const QString &text);

    /// The web address that this text is, if it is nothing else, names a host, and
    /// means the same after it was written and read. Only characters that no address
    /// may have are escaped.
    static std::optional<WebAddress> typed(const QString &text);

    const QString &text() const { return m_text; }
    /// For programs that take no text; not valid for some that were stored.
    Address url() const;

    bool operator==(const WebAddress &) const = default;

private:
    explicit WebAddress(QString text)
        : m_text(std::move(text))
    {
    }

    QString m_text;
};
