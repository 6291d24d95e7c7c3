#include "host/support/Process.h"

#include <array>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <pty.h>
#include <spawn.h>
#include <stdexcept>
#include <string_view>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char** environ; // NOLINT(readability-redundant-declaration)

namespace quelt::host::test {

namespace {

void check(bool isGood, const char* what) {
    if (!isGood) {
        throw std::runtime_error(std::string(what) + ": " + std::strerror(errno));
    }
}

/// The two ends of a pipe, or of a terminal.
struct Channel {
    int reading = -1;
    int writing = -1;

    static Channel pipe() {
        std::array<int, 2> ends{};
        check(::pipe2(ends.data(), O_CLOEXEC) == 0, "pipe");
        return {ends[0], ends[1]};
    }
    /// `ofProgram` is the end that the program gets.
    static Channel terminal(bool programReads) {
        int master = -1;
        int slave = -1;
        check(::openpty(&master, &slave, nullptr, nullptr, nullptr) == 0, "openpty");
        ::fcntl(master, F_SETFD, FD_CLOEXEC);
        ::fcntl(slave, F_SETFD, FD_CLOEXEC);
        return programReads ? Channel{slave, master} : Channel{master, slave};
    }
};

std::string readToEnd(int descriptor) {
    std::string text;
    std::array<char, 65536> piece{};
    for (;;) {
        const ssize_t count = ::read(descriptor, piece.data(), piece.size());
        if (count <= 0) { // a terminal ends with an error when its other side is closed
            ::close(descriptor);
            return text;
        }
        text.append(piece.data(), static_cast<std::size_t>(count));
    }
}

void writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = ::write(descriptor, text.data(), text.size());
        if (count < 0) { // the program reads no further
            break;
        }
        text.remove_prefix(static_cast<std::size_t>(count));
    }
}

std::vector<std::string> environmentFor(const Start& start) {
    std::vector<std::string> result;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string_view text = *entry;
        const std::string name(text.substr(0, text.find('=')));
        if (!start.environment.contains(name) && name != "NO_COLOR" && name != "TERM") {
            result.emplace_back(text);
        }
    }
    for (const auto& [name, value] : start.environment) {
        result.push_back(name + "=" + value);
    }
    return result;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

} // namespace

End run(const Start& start) {
    std::signal(SIGPIPE, SIG_IGN);
    const Channel input = start.hasInputTerminal ? Channel::terminal(true) : Channel::pipe();
    const Channel output = Channel::pipe();
    const Channel messages = start.hasMessageTerminal ? Channel::terminal(false) : Channel::pipe();

    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    check(::posix_spawn_file_actions_init(&actions) == 0 && ::posix_spawnattr_init(&attributes) == 0,
          "spawn");
    if (start.inputPath.empty()) {
        ::posix_spawn_file_actions_adddup2(&actions, input.reading, STDIN_FILENO);
    } else {
        ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, start.inputPath.c_str(), O_RDONLY, 0);
    }
    if (start.outputPath.empty()) {
        ::posix_spawn_file_actions_adddup2(&actions, output.writing, STDOUT_FILENO);
    } else {
        const int flags = O_WRONLY | (start.appendsOutput ? O_APPEND : 0);
        ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, start.outputPath.c_str(), flags, 0);
    }
    ::posix_spawn_file_actions_adddup2(&actions, messages.writing, STDERR_FILENO);
    sigset_t defaults; // the program must set its own handling of a closed pipe
    ::sigemptyset(&defaults);
    ::sigaddset(&defaults, SIGPIPE);
    ::posix_spawnattr_setsigdefault(&attributes, &defaults);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);

    std::vector<std::string> arguments{QUELT_MIGRATE};
    arguments.insert(arguments.end(), start.arguments.begin(), start.arguments.end());
    std::vector<std::string> environment = environmentFor(start);
    if (start.closesOutput) {
        ::close(output.reading);
    }
    pid_t child = 0;
    const int error = ::posix_spawn(&child, QUELT_MIGRATE, &actions, &attributes,
                                    pointersTo(arguments).data(), pointersTo(environment).data());
    ::posix_spawn_file_actions_destroy(&actions);
    ::posix_spawnattr_destroy(&attributes);
    check(error == 0, "cannot start " QUELT_MIGRATE);
    ::close(input.reading);
    ::close(output.writing);
    ::close(messages.writing);

    End end;
    std::thread feeder([&] {
        writeAll(input.writing, start.input);
        if (start.hasInputTerminal) {
            writeAll(input.writing, "\x04"); // end of input, as typed
        } else {
            ::close(input.writing);
        }
    });
    std::thread listener([&] { end.messages = readToEnd(messages.reading); });
    if (!start.closesOutput) {
        end.output = readToEnd(output.reading);
    }
    feeder.join();
    listener.join();
    int status = 0;
    ::waitpid(child, &status, 0);
    if (start.hasInputTerminal) {
        ::close(input.writing);
    }
    end.status = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    return end;
}

} // namespace quelt::host::test
