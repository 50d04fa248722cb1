#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "util/log/log.h"

namespace orvane::test {

// Everything that is logged during its life, whatever its priority.
class CapturedLog {
public:
    CapturedLog() : m_oldMask(setlogmask(0)) {
        openlog("test", LOG_PERROR, 0);
        setlogmask(0xFF);
        ::testing::internal::CaptureStderr();
    }
    ~CapturedLog() {
        ::testing::internal::GetCapturedStderr();
        closelog();
        setlogmask(m_oldMask);
    }
    CapturedLog(const CapturedLog&) = delete;
    CapturedLog& operator=(const CapturedLog&) = delete;

    // All lines since the last call.
    std::string take() {
        std::fflush(stderr);
        std::string text = ::testing::internal::GetCapturedStderr();
        ::testing::internal::CaptureStderr();
        return text;
    }

private:
    const unsigned m_oldMask;
};

}  // namespace orvane::test
