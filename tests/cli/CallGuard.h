#pragma once

#include <csignal>
#include <cstring>
#include <string>
#include <vector>

#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/common_interface_defs.h>
#endif

// Names the command line running in-process when the process dies on it: a
// crash or a sanitizer report would otherwise kill the test binary without
// saying which of a thousand calls did it. A call still running after its
// time is up ends the process too, naming the call.
class CallGuard {
public:
    explicit CallGuard(unsigned secondsPerCall) : seconds_(secondsPerCall) {
        std::signal(SIGALRM, &onDeath);
#if defined(__SANITIZE_ADDRESS__)
        // The sanitizers report crashes themselves, then run this on the way out.
        __sanitizer_set_death_callback([] { onDeath(0); });
#else
        for (int sig : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT}) std::signal(sig, &onDeath);
#endif
    }
    ~CallGuard() {
        ::alarm(0);
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
        ::alarm(seconds_);
    }
    void end() {
        ::alarm(0);
        current_[0] = '\0';
    }

private:
    static void onDeath(int sig) {
        const char* what = sig == SIGALRM ? "\nno answer in time from: " : "\ndied during: ";
        (void)!::write(STDERR_FILENO, what, std::strlen(what));
        (void)!::write(STDERR_FILENO, current_, std::strlen(current_));
        (void)!::write(STDERR_FILENO, "\n", 1);
        if (sig == 0) return;
        std::signal(sig, SIG_DFL);
        if (sig == SIGALRM) ::_exit(1);
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
