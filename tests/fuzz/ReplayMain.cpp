// Runs a fuzz target over saved inputs without libFuzzer, so the seed corpus and every crash
// kept in it replay as an ordinary test. Arguments are files or directories (read whole, in
// sorted order); without any, the corpus the build names is replayed.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    std::vector<fs::path> roots(argv + 1, argv + argc);
#ifdef TYPOLET_FUZZ_CORPUS
    if (roots.empty())
        roots.emplace_back(TYPOLET_FUZZ_CORPUS);
#endif
    std::vector<fs::path> files;
    for (const fs::path& root : roots) {
        if (fs::is_regular_file(root)) {
            files.push_back(root);
        } else if (fs::is_directory(root)) {
            for (const auto& entry : fs::recursive_directory_iterator(root))
                if (entry.is_regular_file())
                    files.push_back(entry.path());
        } else {
            std::fprintf(stderr, "%s: no such file or directory\n", root.c_str());
            return 2;
        }
    }
    if (files.empty()) {
        std::fprintf(stderr, "no inputs to replay\n");
        return 2;
    }
    std::sort(files.begin(), files.end());
    for (const fs::path& file : files) {
        // Named first, so the input that brings the target down is the last one printed.
        std::printf("%s\n", file.c_str());
        std::fflush(stdout);
        std::ifstream in(file, std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(in), {}};
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    }
    std::printf("replayed %zu inputs\n", files.size());
    return 0;
}
