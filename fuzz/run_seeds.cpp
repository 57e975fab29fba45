// Replaces libFuzzer: runs the target once with each file of the given directories.
#include "fuzz_target.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

namespace
{

// Prints the name first, since the target may end the process.
void run_file(const std::filesystem::path& path)
{
    std::cout << path.filename() << std::endl;
    std::ifstream file;
    file.exceptions(std::ios::failbit);
    file.open(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file),
                                  std::istreambuf_iterator<char>()};
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

} // namespace

int main(int argc, char** argv)
{
    int count = 0;
    for (int index = 1; index < argc; ++index)
        for (const auto& entry : std::filesystem::directory_iterator(argv[index])) {
            run_file(entry.path());
            ++count;
        }
    std::cout << count << " seeds\n";
    return count == 0 ? 1 : 0;
}
