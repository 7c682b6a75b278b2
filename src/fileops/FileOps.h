#pragma once

#include "platform/Address.h"

#include <QList>
#include <QString>
#include <QUrl>

class Applications;
class Workers;

/// What the user does with files, beside moving them about. Each returns at once
/// and reports nothing. The applications outlive the workers.
namespace FileOps {

/// Opens all in that application; without one, each in its default application, in
/// order. Of a web location file the address in it is opened.
void open(const QList<Address> &urls, Applications &applications, Workers &workers,
          const QString &application = {});

/// Shows them in the file manager.
void reveal(const QList<QUrl> &urls, Applications &applications, Workers &workers);

/// What is opened for the file: applications of this desktop do not know web
/// location files. Reads the file, so on workers only.
Address opened(const Address &url);

}
