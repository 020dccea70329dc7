#pragma once

#include <algorithm>
#include <csignal>
#include <cstring>
#include <string>
#include <vector>

#include <sys/time.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/common_interface_defs.h>
#endif

// Names the command line running in-process when the process dies on it: a
// crash or a sanitizer report would otherwise kill the test binary without
// saying which of a thousand calls did it. A call that has used up its
// processor time, or is stuck for minutes on end, ends the process too,
// naming the call. Time is counted on the processor, so a busy machine does
// not make a call late.
class CallGuard {
public:
    explicit CallGuard(unsigned cpuSecondsPerCall) : seconds_(cpuSecondsPerCall) {
        std::signal(SIGPROF, &onDeath);
        std::signal(SIGALRM, &onDeath);
#if defined(__SANITIZE_ADDRESS__)
        // The sanitizers report crashes themselves, then run this on the way out.
        __sanitizer_set_death_callback([] { onDeath(0); });
#else
        for (int sig : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT}) std::signal(sig, &onDeath);
#endif
    }
    ~CallGuard() {
        end();
        std::signal(SIGPROF, SIG_DFL);
        std::signal(SIGALRM, SIG_DFL);
#if !defined(__SANITIZE_ADDRESS__)
        for (int sig : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT}) std::signal(sig, SIG_DFL);
#endif
    }
    CallGuard(const CallGuard&) = delete;
    CallGuard& operator=(const CallGuard&) = delete;

    // Marks the start of a call; the text is kept in a fixed buffer a signal handler may read.
    void begin(const std::string& commandLine) {
        std::size_t n = std::min(commandLine.size(), sizeof current_ - 1);
        std::memcpy(current_, commandLine.data(), n);
        current_[n] = '\0';
        setTimer(seconds_);
        ::alarm(kStuckSeconds);
    }
    void end() {
        setTimer(0);
        ::alarm(0);
        current_[0] = '\0';
    }

private:
    static constexpr unsigned kStuckSeconds = 300;

    static void setTimer(unsigned seconds) {
        itimerval timer{};
        timer.it_value.tv_sec = seconds;
        ::setitimer(ITIMER_PROF, &timer, nullptr);
    }

    static void onDeath(int sig) {
        const char* what = sig == SIGPROF ? "\nout of processor time: "
                           : sig == SIGALRM ? "\nstuck: "
                                            : "\ndied during: ";
        (void)!::write(STDERR_FILENO, what, std::strlen(what));
        (void)!::write(STDERR_FILENO, current_, std::strlen(current_));
        (void)!::write(STDERR_FILENO, "\n", 1);
        if (sig == 0) return;
        std::signal(sig, SIG_DFL);
        if (sig == SIGALRM || sig == SIGPROF) ::_exit(1);
        std::raise(sig);
    }

    unsigned seconds_;
    static inline char current_[8192] = {};
};

// A command line as a person would type it, quoting what needs it; long
// arguments are shortened so a report stays readable.
inline std::string commandLine(const std::vector<std::string>& args) {
    std::string line = "velmorant-snippet";
    for (const std::string& arg : args) {
        std::string shown = arg.size() > 60 ? arg.substr(0, 40) + "...(" + std::to_string(arg.size()) + " chars)" : arg;
        bool plain = !shown.empty() && shown.find_first_of(" \t\n'\"$%{}[]*?\\|&;<>()") == std::string::npos;
        line += plain ? " " + shown : " '" + shown + "'";
    }
    return line;
}
