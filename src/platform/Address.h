#pragma once

#include <QByteArray>
#include <QUrl>

#include <algorithm>

/// An address on its way from or to another program, which remembers how it was
/// written: QUrl rewrites hosts and escapes.
struct Address : QUrl
{
    // NOLINTNEXTLINE(google-explicit-constructor): most addresses were never written otherwise.
    Address(const QUrl &url = {})
        : Address(url, url.toEncoded())
    {
    }
    Address(const QUrl &url, const QByteArray &written)
        : QUrl(url)
        , text(std::all_of(written.begin(), written.end(), isPrinting) ? written : url.toEncoded())
    {
    }

    QByteArray text; // Without spaces, line ends and what is not ASCII: those are escaped.

private:
    static bool isPrinting(char c) { return c > ' ' && c < '\x7f'; }
};
