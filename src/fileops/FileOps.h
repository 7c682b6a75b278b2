#pragma once

#include <QList>
#include <QUrl>

class Applications;
class Workers;

/// What the user does with files, beside moving them about.
namespace FileOps {

/// Opens each in its default application, in order; a web location file opens the
/// address in it. Returns at once and reports nothing. The applications outlive
/// the workers.
void open(const QList<QUrl> &urls, Applications &applications, Workers &workers);

}
