// An upload whose thread the system does not start.
#include "tests/support/uploadwindow.h"

#include <atomic>
#include <cerrno>
#include <dlfcn.h>
#include <pthread.h>

using namespace guitest;

namespace {
std::atomic<bool> refuseThreads{false};
}

// Replaces the system's function in this program.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                              void* argument) {
    using Function = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
    static const auto system = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "pthread_create"));
    return refuseThreads ? EAGAIN : system(thread, attributes, start, argument);
}

class UnstartableUpload : public UploadWindow, public testing::WithParamInterface<WindowUpload> {};

TEST_P(UnstartableUpload, EnablesTheControls) {
    open();
    choose(GetParam(), writeFile("image.bin", 100));
    refuseThreads = true;
    click(*window, GetParam().updateButton);
    refuseThreads = false;
    EXPECT_EQ(enabledExchanges(), allExchanges());
    EXPECT_EQ(statusText(*window), "升级没有开始：系统资源不足，请关闭其他程序后重试");
    click(*window, "btn_heartbeat");
    EXPECT_EQ(statusText(*window), "测试心跳：完成");
    click(*window, "btn_open"); // no lease was left behind
    EXPECT_EQ(text(*window, "btn_open"), "打开串口");
}

INSTANTIATE_TEST_SUITE_P(Every, UnstartableUpload, testing::Values(appUpload, systemUpload, modelUpload),
                         [](const auto& test) { return std::string(test.param.name); });
