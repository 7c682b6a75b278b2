#pragma once

#include <QIcon>
#include <QUrl>

/// Pictures for kinds of things, from the user's icon theme. They are chosen by
/// name and cost no look at the file's content.
class Icons
{
public:
    virtual ~Icons() = default;
    virtual QIcon forFile(const QUrl &url) = 0;
    virtual QIcon forWebLocation() = 0;
};
