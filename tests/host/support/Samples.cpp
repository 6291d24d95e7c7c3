#include "host/support/Samples.h"

#include "interchange/ContextWriter.h"

#include <rapidjson/document.h>

namespace quelt::host::test {

std::string_view sampleContext() {
    return R"({"format": "quelt-context/1",
 "dictionaries": [
  {"name": "Truck", "guid": "00000000-0000-4000-8000-000000000001", "variables": [
   {"kind": "option", "name": "Engine", "guid": "00000000-0000-4000-8000-000000000011", "values": ["V6", "V8"]},
   {"kind": "selection", "name": "Package", "guid": "00000000-0000-4000-8000-000000000012", "values": ["Sport", "Town"]},
   {"kind": "serial", "name": "Unit", "guid": "00000000-0000-4000-8000-000000000013", "externalType": 12,
    "revisions": [{"rev": "2010", "seq": 5}, {"rev": "2012", "seq": 7}]},
   {"kind": "treeSeries", "name": "Line", "guid": "00000000-0000-4000-8000-000000000014", "number": 18,
    "elements": [{"seq": 1}, {"seq": 5, "parent": 1}, {"seq": 7, "parent": 5}, {"seq": 6, "parent": 1}]},
   {"kind": "option", "name": "Colour", "guid": "00000000-0000-4000-8000-000000000015", "values": ["Red"]},
   {"kind": "serial", "name": "Mixed", "guid": "00000000-0000-4000-8000-000000000016", "externalType": 13}]},
  {"name": "Bus", "guid": "00000000-0000-4000-8000-000000000002", "variables": [
   {"kind": "option", "name": "Engine", "guid": "00000000-0000-4000-8000-000000000011", "values": ["V6", "V8"]},
   {"kind": "option", "name": "Colour", "guid": "00000000-0000-4000-8000-000000000025", "values": ["Red", "Blue"]},
   {"kind": "option", "name": "Mixed", "guid": "00000000-0000-4000-8000-000000000016", "values": ["Yes"]},
   {"kind": "option", "name": "Seats", "guid": "00000000-0000-4000-8000-000000000027", "values": ["Few"]}]}],
 "variables": [
  {"kind": "option", "name": "Loose", "guid": "00000000-0000-4000-8000-000000000031", "values": ["Yes", "No"]},
  {"kind": "option", "name": "Seats", "guid": "00000000-0000-4000-8000-000000000032", "values": ["Few", "Many"]}],
 "effectivities": [
  {"kind": "predefined", "name": "ECO-1", "guid": "00000000-0000-4000-8000-000000000041",
   "expression": {"multiModel": {"kind": "change", "criteria": [
     {"dictionary": "Truck", "own": {"option": "Engine", "of": "Truck", "in": ["V6"]}}]}}},
  {"kind": "predefined", "name": "ECO-2", "guid": "00000000-0000-4000-8000-000000000042"},
  {"kind": "basic", "name": "EFF-7", "guid": "00000000-0000-4000-8000-000000000043",
   "expression": {"tree": {"not": null}}, "inheritedIn": ["Truck"]}]})";
}

std::unique_ptr<LoadedContext> contextOf(std::string_view json) {
    return readContext(Padded(json).text());
}

std::string refusalOfContext(std::string_view json) {
    try {
        (void)contextOf(json);
    } catch (const Refusal& refusal) {
        return refusal.what();
    }
    return "accepted";
}

std::string written(const LoadedContext& context) {
    TextBuffer buffer;
    JsonWriter writer(buffer);
    writeContext(writer, context);
    return std::string(buffer.view());
}

std::string answerTo(const LoadedContext& context, std::string_view line, ConvertOptions options) {
    RecordConverter converter(context, options);
    TextBuffer answers;
    Counts counts;
    converter.convert(Line{0, line.size(), 1, false, false}, Padded(line).text(), answers, counts);
    std::string answer(answers.view());
    answer.pop_back(); // the line end
    return answer;
}

std::string refusalOf(std::string_view line) {
    static const std::unique_ptr<LoadedContext> context = contextOf(sampleContext());
    const std::string answer = answerTo(*context, line);
    rapidjson::Document document;
    document.Parse(answer.data(), answer.size());
    return document.HasMember("malformed") ? document["malformed"].GetString() : answer;
}

std::string repeated(std::string_view text, std::size_t count) {
    std::string result;
    result.reserve(text.size() * count);
    for (std::size_t number = 0; number < count; ++number) {
        result += text;
    }
    return result;
}

} // namespace quelt::host::test
