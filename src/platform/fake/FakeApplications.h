#pragma once

#include "platform/Applications.h"

class FakeApplications final : public Applications
{
public:
    void open(const QList<Address> &urls) override { opened += urls; }
    void open(const QList<Address> &urls, const QString &application) override
    {
        opened += urls;
        openedWith = application;
    }
    QList<OpenWithApp> thatOpen(const QUrl &url, int limit) override
    {
        asked.append(url);
        return installed.mid(0, limit);
    }
    QList<InstalledApplication> all() override { return {}; }
    void reveal(const QList<QUrl> &urls) override { revealed += urls; }

    QList<OpenWithApp> installed;
    QList<QUrl> asked;
    QList<Address> opened;
    QString openedWith;
    QList<QUrl> revealed;
};
