#pragma once

#include "platform/Applications.h"

class FakeApplications final : public Applications
{
public:
    void open(const QList<QUrl> &urls) override { opened += urls; }
    QList<QUrl> opened;
};
