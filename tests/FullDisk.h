#pragma once

#include <gtest/gtest.h>

#include <csignal>

#include <sys/resource.h>

/// No file can grow beyond that many bytes while it lives, as on a full disk.
class FullDisk
{
public:
    explicit FullDisk(rlim_t most = 0)
        : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        EXPECT_EQ(getrlimit(RLIMIT_FSIZE, &m_before), 0);
        const rlimit small { most, m_before.rlim_max };
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    }
    ~FullDisk()
    {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }
    FullDisk(const FullDisk &) = delete;
    FullDisk &operator=(const FullDisk &) = delete;

private:
    rlimit m_before {};
    void (*m_handler)(int);
};
