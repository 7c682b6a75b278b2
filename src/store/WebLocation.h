#pragma once

#include "store/WebAddress.h"

#include <QByteArray>

#include <optional>

/// Files of extension "webloc": a property list that holds a web address.
namespace WebLocation {

/// As XML.
QByteArray encode(const WebAddress &address);

/// The absolute address under "URL" in the root dictionary, of the XML form or
/// the binary one; none for anything else.
std::optional<Address> decode(const QByteArray &bytes);

}
