#include "host/support/Examples.h"

#include "host/support/Samples.h"

#include <fstream>
#include <iterator>

namespace quelt::host::test {

const std::string& exampleContextText() {
    static const std::string s_text = [] {
        std::ifstream file(QUELT_SOURCE_DIR "/examples/context.json", std::ios::binary);
        return std::string{std::istreambuf_iterator<char>(file), {}};
    }();
    return s_text;
}

const std::vector<std::string>& exampleRecords() {
    static const std::vector<std::string> s_records = [] {
        std::ifstream file(QUELT_SOURCE_DIR "/examples/records.ndjson");
        std::vector<std::string> records;
        for (std::string line; std::getline(file, line);) {
            records.push_back(line);
        }
        return records;
    }();
    return s_records;
}

void convert(LineConverter& converter, std::string_view record, TextBuffer& answers, Counts& counts) {
    const Padded padded(record);
    converter.convert(Line{0, record.size(), 1, false, false}, padded.text(), answers, counts);
}

std::string answerOf(LineConverter& converter, std::string_view record) {
    TextBuffer answers;
    Counts counts;
    convert(converter, record, answers, counts);
    return std::string(answers.view());
}

} // namespace quelt::host::test
