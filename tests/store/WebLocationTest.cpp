#include "store/WebLocation.h"

#include <gtest/gtest.h>

namespace {

QByteArray xml(const QByteArray &root, const QByteArray &before = {})
{
    return "<?xml version=\"1.0\"?>" + before + "<plist version=\"1.0\">" + root + "</plist>";
}

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

TEST(WebLocationTest, XmlOfOthersIsRead)
{
    const std::pair<QByteArray, const char *> cases[] = {
        { xml("<dict><key>N</key><dict><key>URL</key><string>http://no/</string></dict>"
              "<key>URL</key><string>\n http://a.org </string></dict>"),
          "http://a.org" },
        { xml("<dict><!-- URL "
              "--><key>URL</key><string><![CDATA[http://a.org/?a&b]]></string></dict>"),
          "http://a.org/?a&b" },
        { xml("<dict><key>URL</key><string>a.org/x</string></dict>"), "none" }, // Relative.
        { xml("<dict><key>URL</key><string></string></dict>"), "none" },
        { xml("<dict><key>URL</key><integer>5</integer><string>http://a.org</string></dict>"),
          "none" },
        { xml("<dict><key>URL</key><string>http://<b/>a.org</string></dict>"), "none" },
        { xml("<dict><key>URL</key><string>http://a.org"), "none" },
        { xml("<array><string>URL</string><string>http://a.org</string></array>"), "none" },
        { "<dict><key>URL</key><string>http://a.org</string></dict>", "none" },
        { xml("<dict><key>URL</key><string>&a;</string></dict>",
              "<!DOCTYPE p [<!ENTITY a 'http://a.org'>]>"),
          "none" },
        { xml("<dict><key>URL</key><string>&b;</string></dict>",
              "<!DOCTYPE p [<!ENTITY a 'http://a.org'><!ENTITY b '&a;&a;&a;&a;&a;&a;'>]>"),
          "none" },
        { xml("<dict>" + QByteArray("<array>").repeated(100000)), "none" },
        { "[InternetShortcut]\nURL=http://a.org", "none" },
        { "", "none" },
    };
    for (const auto &[bytes, address] : cases)
        EXPECT_EQ(decoded(bytes), address) << bytes.left(200).constData();
}

TEST(WebLocationTest, TheBinaryFormIsReadAndItsDamageHarmless)
{
    const std::pair<const char *, const char *> cases[] = {
        // Wide characters, between other keys.
        { "YnBsaXN0MDDTAQIDBAUGVE5hbWVTVVJMUVoQBW8QDwBoAHQAdABwAHMAOgAvAC8A6QAuAG8AcgBnAC9l5aEHEAEI"
          "DxQYGhw9PwAAAAAAAAEBAAAAAAAAAAgAAAAAAAAAAAAAAAAAAABB",
          "https://xn--9ca.org/%E6%97%A5" },
        // More than 14 keys, so that their number stands apart.
        { "YnBsaXN0MDDfEBUBAgMEBQYHCAkKCwwNDg8QERITFBUWFxgZGhscHR4fICEiIyQlJicoKSpTVVJMU2swMFNrMDFT"
          "azAyU2swM1NrMDRTazA1U2swNlNrMDdTazA4U2swOVNrMTBTazExU2sxMlNrMTNTazE0U2sxNVNrMTZTazE3U2sx"
          "OFNrMTlfECxodHRwczovL2Eub3JnL3h4eHh4eHh4eHh4eHh4eHh4eHh4eHh4eHh4eHh4eFEwUTFRMlEzUTRRNVE2"
          "UTdROFE5UjEwUjExUjEyUjEzUjE0UjE1UjE2UjE3UjE4UjE5CDU5PUFFSU1RVVldYWVpbXF1eX2BhYm4ury+wMLE"
          "xsjKzM/S1djb3uHk5wAAAAAAAAEBAAAAAAAAACsAAAAAAAAAAAAAAAAAAADq",
          "https://a.org/xxxxxxxxxxxxxxxxxxxxxxxxxxxxxx" },
        // Another key, a number as value, a list.
        { "YnBsaXN0MDDRAQJTdXJsXWh0dHBzOi8vYS5vcmcICw8AAAAAAAABAQAAAAAAAAADAAAAAAAAAAAAAAAAAAAAHQ="
          "=",
          "none" },
        { "YnBsaXN0MDDRAQJTVVJMEAUICw8AAAAAAAABAQAAAAAAAAADAAAAAAAAAAAAAAAAAAAAEQ==", "none" },
        { "YnBsaXN0MDCiAQJTVVJMXWh0dHBzOi8vYS5vcmcICw8AAAAAAAABAQAAAAAAAAADAAAAAAAAAAAAAAAAAAAAHQ="
          "=",
          "none" },
    };
    for (const auto &[base64, address] : cases)
        EXPECT_EQ(decoded(QByteArray::fromBase64(base64)), address);
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
