// Measures the frames of a program with a GLFW window. This library is preloaded into the program (LD_PRELOAD). A frame
// is the time between two waits for events. At exit the library writes the file VOLO_FRAMES. The first line is the time
// when the first frame was shown, in microseconds of the monotonic clock. Then there is one line for each frame: the
// processor time of the frame's thread and the wall-clock time, in microseconds.

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
    ~FrameWatch() {
        const char* path = std::getenv("VOLO_FRAMES");
        std::FILE* file = path && !frames_.empty() ? std::fopen(path, "w") : nullptr;
        if (!file) return;
        std::fprintf(file, "%.0f\n", firstShown_);
        for (const Frame& frame : frames_)
            std::fprintf(file, "%.0f %.0f\n", frame.processor, frame.wall);
        std::fclose(file);
    }

    void begin() { began_ = {microseconds(CLOCK_THREAD_CPUTIME_ID), microseconds(CLOCK_MONOTONIC)}; }

    void end() {
        if (began_.wall > 0.0)
            frames_.push_back({microseconds(CLOCK_THREAD_CPUTIME_ID) - began_.processor,
                               microseconds(CLOCK_MONOTONIC) - began_.wall});
    }

    void shown() {
        if (++shows_ == 2) firstShown_ = microseconds(CLOCK_MONOTONIC); // the first one shows the empty window
    }

  private:
    Frame began_;
    int shows_ = 0;
    double firstShown_ = 0.0;
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
