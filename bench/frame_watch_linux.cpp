// Measures the frames of a program with a GLFW window, as a library for LD_PRELOAD. A frame is the time between two
// waits for events. The environment variable VOLO_FRAMES is the path of the output file. Its first line is written when
// the first frame with content is shown: the time of the monotonic clock, and the processor time that the process has
// used, both in microseconds. VOLO_EMPTY_FRAMES empty frames come before this frame (default: 1, the launcher's empty
// window). On exit, one line per frame follows: the processor microseconds of the frame's thread, and the wall-clock
// microseconds.

#include <cstdio>
#include <cstdlib>
#include <vector>

#include <dlfcn.h>
#include <time.h>

namespace {

double microseconds(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

struct Frame {
    double processor = 0.0;
    double wall = 0.0;
};

class FrameWatch {
  public:
    FrameWatch() {
        const char* empty = std::getenv("VOLO_EMPTY_FRAMES");
        emptyShows_ = empty ? std::atoi(empty) : 1;
    }

    ~FrameWatch() {
        if (!file_) return;
        for (const Frame& frame : frames_)
            std::fprintf(file_, "%.0f %.0f\n", frame.processor, frame.wall);
        std::fclose(file_);
    }

    void begin() { began_ = {microseconds(CLOCK_THREAD_CPUTIME_ID), microseconds(CLOCK_MONOTONIC)}; }

    void end() {
        if (began_.wall > 0.0)
            frames_.push_back({microseconds(CLOCK_THREAD_CPUTIME_ID) - began_.processor,
                               microseconds(CLOCK_MONOTONIC) - began_.wall});
    }

    void shown() {
        const char* path = std::getenv("VOLO_FRAMES");
        if (emptyShows_-- != 0 || !path) return;
        file_ = std::fopen(path, "w");
        if (!file_) return;
        std::fprintf(file_, "%.0f %.0f\n", microseconds(CLOCK_MONOTONIC), microseconds(CLOCK_PROCESS_CPUTIME_ID));
        std::fflush(file_);
    }

  private:
    Frame began_;
    int emptyShows_ = 0; // number of empty frames that are still to be shown
    std::FILE* file_ = nullptr;
    std::vector<Frame> frames_;
};

FrameWatch watch;

template<typename Function>
Function original(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" void glfwPollEvents() {
    static const auto poll = original<void (*)()>("glfwPollEvents");
    watch.end();
    poll();
    watch.begin();
}

extern "C" void glfwWaitEventsTimeout(double seconds) {
    static const auto wait = original<void (*)(double)>("glfwWaitEventsTimeout");
    watch.end();
    wait(seconds);
    watch.begin();
}

extern "C" void glfwSwapBuffers(void* window) {
    static const auto swap = original<void (*)(void*)>("glfwSwapBuffers");
    swap(window);
    watch.shown();
}
