// Files that cannot grow beyond a size, as on a full disk.
#pragma once

#include <csignal>

#include <sys/resource.h>

class SmallDisk {
public:
    explicit SmallDisk(rlim_t bytes) : oldHandler_(signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &old_);
        const rlimit limit = {bytes, old_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;
    ~SmallDisk() {
        setrlimit(RLIMIT_FSIZE, &old_);
        signal(SIGXFSZ, oldHandler_);
    }

private:
    rlimit old_ = {};
    void (*oldHandler_)(int);
};
