#pragma once

#include "platform/Address.h"

#include <QList>
#include <QUrl>

#include <chrono>

/// Files by the addresses that other programs give them.
namespace LocalFiles {

/// Whether it is an address of the desktop's virtual file systems (sftp, smb, mtp and
/// the like): a file, which this program can reach only by a local path.
bool isRemote(const QUrl &url);

/// The same addresses, as local ones where the desktop has mounted what they name, and
/// those of directories with a slash at the end. What has not been answered by the limit
/// stands as it was. Waits that long at most: worker threads only.
QList<Address> examined(const QList<Address> &urls,
                        std::chrono::milliseconds limit = std::chrono::seconds(2));

}
