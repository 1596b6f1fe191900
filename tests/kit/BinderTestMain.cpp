// A GoogleTest main for a process that talks binder: callbacks, one-way calls and death notices
// reach it only on binder threads, so it starts its pool before any test runs, as a device
// process must.
#include <android/binder_process.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    ::testing::InitGoogleMock(&argc, argv);
    ABinderProcess_startThreadPool();
    return RUN_ALL_TESTS();
}
