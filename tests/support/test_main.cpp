#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>

int main(int argc, char** argv) {
    // Windows knows white space beyond ASCII in any locale.
    std::setlocale(LC_CTYPE, "C.UTF-8");  // NOLINT(concurrency-mt-unsafe): no other thread yet
    testing::InitGoogleTest(&argc, argv);
    const int result = RUN_ALL_TESTS();
    // A filter that matches nothing must not look like success.
    if (testing::UnitTest::GetInstance()->test_to_run_count() == 0) {
        std::fputs("error: no test was run\n", stderr);
        return 3;
    }
    return result;
}
