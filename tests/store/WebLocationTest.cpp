#include "store/WebLocation.h"

#include <gtest/gtest.h>

namespace {

std::string decoded(const QByteArray &bytes)
{
    const auto url = WebLocation::decode(bytes);
    return url ? url->toEncoded().toStdString() : "none";
}

/// The property list {"URL": "https://a.org/x?y=1&z"} of another system.
const QByteArray binary
    = QByteArray::fromBase64("YnBsaXN0MDDRAQJTVVJMXxAVaHR0cHM6Ly9hLm9yZy94P3k9MSZ6CAsPAAAAAAAAAQEAA"
                             "AAAAAAAAwAAAAAAAAAAAAAAAAAAACc=");

}

TEST(WebLocationTest, WhatIsWrittenIsReadBack)
{
    for (const char *address :
         { "https://a.org/", "http://u:p@a.org:81/%C3%A9%20x?a=1&b=%3C#f'\"", "mailto:a@b.org" }) {
        const QUrl url(QString::fromUtf8(address));
        EXPECT_EQ(WebLocation::decode(WebLocation::encode(url)), url);
    }
}

TEST(WebLocationTest, TheBinaryFormIsReadAndItsDamageHarmless)
{
    EXPECT_EQ(decoded(binary), "https://a.org/x?y=1&z");

    for (qsizetype at = 0; at < binary.size(); ++at) {
        WebLocation::decode(binary.first(at));
        for (const int byte : { 0x00, 0x7f, 0x80, 0xff }) {
            QByteArray damaged = binary;
            damaged[at] = static_cast<char>(byte);
            WebLocation::decode(damaged); // The sanitizers judge.
        }
    }
}
