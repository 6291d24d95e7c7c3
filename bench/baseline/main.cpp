#include <simdjson.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

// What converting a file of records is measured against: reads the same lines, parses each with the same JSON
// library, looks at every value once, and writes a line of the same length as the answer to it.

namespace {

constexpr std::size_t s_pieceSize = std::size_t{1} << 20U;

[[noreturn]] void fail(const std::string& what) {
    throw std::runtime_error(what + ": " + std::strerror(errno));
}

int openFile(const char* path, int flags) {
    const int descriptor = ::open(path, flags | O_CLOEXEC, 0666);
    if (descriptor < 0) {
        fail(path);
    }
    return descriptor;
}

/// Calls `visit` with each line of a file, without its end. Behind a line the parser's padding may be read.
template <class Visit>
void eachLine(int descriptor, Visit visit) {
    std::size_t capacity = 2 * s_pieceSize;
    auto memory = std::make_unique_for_overwrite<char[]>(capacity + simdjson::SIMDJSON_PADDING);
    std::size_t size = 0;
    for (;;) {
        if (capacity - size < s_pieceSize) {
            auto larger = std::make_unique_for_overwrite<char[]>(2 * capacity + simdjson::SIMDJSON_PADDING);
            std::memcpy(larger.get(), memory.get(), size);
            memory = std::move(larger);
            capacity *= 2;
        }
        const ssize_t count = ::read(descriptor, memory.get() + size, s_pieceSize);
        if (count < 0) {
            fail("reading");
        }
        if (count == 0) {
            return;
        }
        const char* line = memory.get();
        const char* const end = line + size + count;
        while (const void* const found = std::memchr(line, '\n', static_cast<std::size_t>(end - line))) {
            const char* const lineEnd = static_cast<const char*>(found);
            visit(std::string_view(line, static_cast<std::size_t>(lineEnd - line)));
            line = lineEnd + 1;
        }
        size = static_cast<std::size_t>(end - line);
        std::memmove(memory.get(), line, size);
    }
}

/// Gathers lines and writes them in pieces.
class Output {
public:
    explicit Output(int descriptor) : m_descriptor(descriptor) { m_text.reserve(2 * s_pieceSize); }

    void addLine(std::size_t length) {
        m_text.append(length, '-');
        m_text += '\n';
        if (m_text.size() >= s_pieceSize) {
            flush();
        }
    }
    void flush() {
        std::string_view rest = m_text;
        while (!rest.empty()) {
            const ssize_t count = ::write(m_descriptor, rest.data(), rest.size());
            if (count < 0) {
                fail("writing");
            }
            rest.remove_prefix(static_cast<std::size_t>(count));
        }
        m_text.clear();
    }

private:
    int m_descriptor;
    std::string m_text;
};

/// Something of every key and value, so that none is skipped.
std::uint64_t walk(simdjson::dom::element value) {
    using simdjson::dom::element_type;
    std::uint64_t sum = 1;
    switch (value.type()) {
    case element_type::ARRAY:
        for (const simdjson::dom::element item : simdjson::dom::array(value)) {
            sum += walk(item);
        }
        return sum;
    case element_type::OBJECT:
        for (const auto [key, item] : simdjson::dom::object(value)) {
            sum += key.size() + walk(item);
        }
        return sum;
    case element_type::STRING:
        return std::string_view(value).size();
    case element_type::INT64:
        return static_cast<std::uint64_t>(std::int64_t(value));
    default:
        return sum;
    }
}

double processorSeconds() {
    timespec now{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

int run(const char* records, const char* answers, const char* output) {
    std::vector<std::uint32_t> lengths;
    eachLine(openFile(answers, O_RDONLY),
             [&](std::string_view line) { lengths.push_back(static_cast<std::uint32_t>(line.size())); });

    const double start = processorSeconds();
    const int input = openFile(records, O_RDONLY);
    Output lines(openFile(output, O_WRONLY | O_CREAT | O_TRUNC));
    simdjson::dom::parser parser;
    std::uint64_t sum = 0;
    std::size_t number = 0;
    eachLine(input, [&](std::string_view line) {
        simdjson::dom::element root;
        if (parser.parse(line.data(), line.size(), false).get(root) != simdjson::SUCCESS) {
            throw std::runtime_error("line " + std::to_string(number + 1) + " is not JSON");
        }
        sum += walk(root);
        lines.addLine(lengths.at(number++));
    });
    lines.flush();
    std::cout << "{\"records\": " << number << ", \"sum\": " << sum
              << ", \"seconds\": " << processorSeconds() - start << "}\n";
    return 0;
}

} // namespace

int main(int count, char** arguments) {
    if (count != 4) {
        std::cerr << "usage: quelt-parse-baseline RECORDS ANSWERS OUTPUT\n"
                     "Parses the lines of RECORDS and writes lines as long as those of ANSWERS to OUTPUT. "
                     "Prints the processor time that this took, without the reading of ANSWERS.\n";
        return 2;
    }
    try {
        return run(arguments[1], arguments[2], arguments[3]);
    } catch (const std::exception& failure) {
        std::cerr << "quelt-parse-baseline: " << failure.what() << '\n';
        return 2;
    }
}
