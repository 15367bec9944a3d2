#pragma once

#include <csignal>
#include <sys/resource.h>

// While it lives, no file of this process may grow, as on a full disk:
// writes fail instead of the process being killed by SIGXFSZ.
class DiskFull
{
public:
    DiskFull() : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &m_saved);
        const rlimit none{0, m_saved.rlim_max};
        setrlimit(RLIMIT_FSIZE, &none);
    }
    ~DiskFull()
    {
        setrlimit(RLIMIT_FSIZE, &m_saved);
        std::signal(SIGXFSZ, m_handler);
    }
    DiskFull(const DiskFull &) = delete;
    DiskFull &operator=(const DiskFull &) = delete;

private:
    rlimit m_saved = {};
    void (*m_handler)(int) = nullptr;
};
