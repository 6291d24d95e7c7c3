// Runs a fuzz target over every file of the folders that are named. The target ends the process where
// something is wrong.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int count, char** folders) {
    std::size_t inputs = 0;
    for (int argument = 1; argument < count; ++argument) {
        for (const std::filesystem::directory_entry& file :
             std::filesystem::directory_iterator(folders[argument])) {
            std::fprintf(stderr, "%s\n", file.path().filename().string().c_str());
            std::ifstream stream(file.path(), std::ios::binary);
            const std::vector<char> bytes{std::istreambuf_iterator<char>(stream),
                                          std::istreambuf_iterator<char>()};
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
            ++inputs;
        }
    }
    std::fprintf(stderr, "replayed %zu inputs\n", inputs);
    return inputs > 0 ? 0 : 1;
}
