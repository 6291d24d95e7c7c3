#include "host/support/Process.h"

#include "platform/WindowsText.h"

#include <array>
#include <stdexcept>
#include <string_view>
#include <thread>

namespace quelt::host::test {

namespace {

void check(bool isGood, const char* what) {
    if (!isGood) {
        throw std::runtime_error(std::string(what) + ": error " + std::to_string(::GetLastError()));
    }
}

SECURITY_ATTRIBUTES inheritable() {
    return {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
}

/// The two ends of a pipe; the program inherits one.
struct Channel {
    HANDLE reading = nullptr;
    HANDLE writing = nullptr;

    static Channel pipe(bool programReads) {
        Channel channel;
        SECURITY_ATTRIBUTES attributes = inheritable();
        check(::CreatePipe(&channel.reading, &channel.writing, &attributes, 0) != 0, "pipe");
        ::SetHandleInformation(programReads ? channel.writing : channel.reading, HANDLE_FLAG_INHERIT, 0);
        return channel;
    }
};

HANDLE openFor(const std::string& path, DWORD access) {
    SECURITY_ATTRIBUTES attributes = inheritable();
    return ::CreateFileW(toNativePath(path).c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, &attributes,
                         OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
}

std::string readToEnd(HANDLE handle) {
    std::string text;
    std::array<char, 65536> piece{};
    DWORD count = 0;
    while (::ReadFile(handle, piece.data(), static_cast<DWORD>(piece.size()), &count, nullptr) != 0 &&
           count > 0) {
        text.append(piece.data(), count);
    }
    ::CloseHandle(handle);
    return text;
}

void writeAll(HANDLE handle, std::string_view text) {
    while (!text.empty()) {
        DWORD count = 0;
        const auto size = static_cast<DWORD>(std::min<std::size_t>(text.size(), 65536));
        if (::WriteFile(handle, text.data(), size, &count, nullptr) == 0) { // the program reads no further
            break;
        }
        text.remove_prefix(count);
    }
    ::CloseHandle(handle);
}

/// As the program will take it apart again.
std::wstring quoted(const std::string& argument) {
    std::wstring result = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t unit : toUtf16(argument)) {
        if (unit == L'"') {
            result.append(backslashes + 1, L'\\');
        }
        backslashes = unit == L'\\' ? backslashes + 1 : 0;
        result += unit;
    }
    return result + std::wstring(backslashes, L'\\') + L"\"";
}

std::wstring commandLine(const Start& start) {
    std::wstring result = quoted(QUELT_MIGRATE);
    for (const std::string& argument : start.arguments) {
        result += L" " + quoted(argument);
    }
    return result;
}

std::wstring environmentFor(const Start& start) {
    std::wstring result;
    wchar_t* const block = ::GetEnvironmentStringsW();
    for (const wchar_t* entry = block; *entry != L'\0'; entry += std::wstring_view(entry).size() + 1) {
        const std::wstring_view text = entry;
        const std::string name = toUtf8(text.substr(0, text.find(L'=', 1)));
        if (!start.environment.contains(name) && name != "NO_COLOR" && name != "TERM") {
            result.append(text).push_back(L'\0');
        }
    }
    ::FreeEnvironmentStringsW(block);
    for (const auto& [name, value] : start.environment) {
        result.append(toUtf16(name + "=" + value)).push_back(L'\0');
    }
    return result + L'\0';
}

} // namespace

End run(const Start& start) {
    if (start.hasInputTerminal || start.hasMessageTerminal) {
        throw std::runtime_error("there are no terminals here");
    }
    const Channel input = Channel::pipe(true);
    const Channel output = Channel::pipe(false);
    const Channel messages = Channel::pipe(false);

    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = start.inputPath.empty() ? input.reading : openFor(start.inputPath, GENERIC_READ);
    startup.hStdOutput =
        start.outputPath.empty()
            ? output.writing
            : openFor(start.outputPath, start.appendsOutput ? FILE_APPEND_DATA : GENERIC_WRITE);
    startup.hStdError = messages.writing;
    if (start.closesOutput) {
        ::CloseHandle(output.reading);
    }

    std::wstring command = commandLine(start);
    std::wstring environment = environmentFor(start);
    PROCESS_INFORMATION program{};
    check(::CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, CREATE_UNICODE_ENVIRONMENT,
                           environment.data(), nullptr, &startup, &program) != 0,
          "cannot start " QUELT_MIGRATE);
    ::CloseHandle(program.hThread);
    ::CloseHandle(input.reading);
    ::CloseHandle(output.writing);
    ::CloseHandle(messages.writing);
    if (!start.inputPath.empty()) {
        ::CloseHandle(startup.hStdInput);
    }
    if (!start.outputPath.empty()) {
        ::CloseHandle(startup.hStdOutput);
    }

    End end;
    std::thread feeder([&] { writeAll(input.writing, start.input); });
    std::thread listener([&] { end.messages = readToEnd(messages.reading); });
    if (!start.closesOutput) {
        end.output = readToEnd(output.reading);
    }
    feeder.join();
    listener.join();
    ::WaitForSingleObject(program.hProcess, INFINITE);
    DWORD status = 0;
    ::GetExitCodeProcess(program.hProcess, &status);
    ::CloseHandle(program.hProcess);
    end.status = static_cast<int>(status);
    return end;
}

} // namespace quelt::host::test
