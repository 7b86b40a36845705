// Replay driver for the fuzz targets in the normal build: runs the target over every file of its
// seed corpus, then over a fixed number of seeded pseudo-random mutations of them, so that each
// build and CI exercise the same inputs a fuzzing run starts from. A crash, a sanitizer report or
// a trap in a target's property check fails the run.
//
// Usage: <target> CORPUS_DIR [MUTATIONS]
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

using Input = std::vector<uint8_t>;

constexpr std::size_t kDefaultMutations = 2000;
constexpr std::size_t kMaxInputSize = 16384;

void Run(const Input& input) {
    // A copy of exactly the input's size, so that a read past its end is caught by ASan.
    const std::unique_ptr<uint8_t[]> copy(new uint8_t[input.size()]);
    std::copy(input.begin(), input.end(), copy.get());
    LLVMFuzzerTestOneInput(input.empty() ? nullptr : copy.get(), input.size());
}

// One random edit of the kinds a fuzzer makes: flip a bit, set a byte to an interesting value,
// insert or erase a run, duplicate a piece, or splice in part of another seed.
void Mutate(Input& input, const std::vector<Input>& seeds, std::mt19937& rng) {
    auto pick = [&rng](std::size_t n) {
        return std::uniform_int_distribution<std::size_t>(0, n)(rng);
    };
    static constexpr uint8_t kInteresting[] = {0,   '\n', '\r', '"', '\\', '=',  ',',  '-', '[',
                                               ']', ' ',  '0',  '9', 'f',  0x7F, 0x80, 0xFF};
    switch (pick(5)) {
        case 0:
            if (!input.empty())
                input[pick(input.size() - 1)] ^= static_cast<uint8_t>(1u << pick(7));
            break;
        case 1:
            if (!input.empty())
                input[pick(input.size() - 1)] = kInteresting[pick(std::size(kInteresting) - 1)];
            break;
        case 2: {
            const std::size_t at = pick(input.size());
            input.insert(input.begin() + static_cast<std::ptrdiff_t>(at), pick(8),
                         kInteresting[pick(std::size(kInteresting) - 1)]);
            break;
        }
        case 3:
            if (!input.empty()) {
                const std::size_t at = pick(input.size() - 1);
                const std::size_t n = std::min(pick(16), input.size() - at);
                input.erase(input.begin() + static_cast<std::ptrdiff_t>(at),
                            input.begin() + static_cast<std::ptrdiff_t>(at + n));
            }
            break;
        case 4:
            if (!input.empty()) {
                const std::size_t at = pick(input.size() - 1);
                const std::size_t n = std::min(pick(32), input.size() - at);
                const Input piece(input.begin() + static_cast<std::ptrdiff_t>(at),
                                  input.begin() + static_cast<std::ptrdiff_t>(at + n));
                input.insert(input.begin() + static_cast<std::ptrdiff_t>(pick(input.size())),
                             piece.begin(), piece.end());
            }
            break;
        default: {
            const Input& other = seeds[pick(seeds.size() - 1)];
            const std::size_t from = pick(other.size());
            const std::size_t at = pick(input.size());
            input.resize(at);
            input.insert(input.end(), other.begin() + static_cast<std::ptrdiff_t>(from),
                         other.end());
            break;
        }
    }
    if (input.size() > kMaxInputSize)
        input.resize(kMaxInputSize);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2 || argc > 3) {
        std::fprintf(stderr, "usage: %s CORPUS_DIR [MUTATIONS]\n", argv[0]);
        return 2;
    }
    const std::size_t mutations = argc == 3
                                      ? static_cast<std::size_t>(std::strtoul(argv[2], nullptr, 10))
                                      : kDefaultMutations;

    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(argv[1], error)) {
        if (entry.is_regular_file())
            files.push_back(entry.path());
    }
    if (error || files.empty()) {
        std::fprintf(stderr, "%s: no seed files in %s\n", argv[0], argv[1]);
        return 2;
    }
    // Directory order differs between file systems; the mutations must not.
    std::sort(files.begin(), files.end());

    std::vector<Input> seeds;
    for (const auto& file : files) {
        std::ifstream in(file, std::ios::binary);
        seeds.emplace_back(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
        Run(seeds.back());
    }
    std::mt19937 rng(20261121);
    for (std::size_t i = 0; i < mutations; ++i) {
        Input input = seeds[i % seeds.size()];
        const int edits = 1 + static_cast<int>(rng() % 4);
        for (int e = 0; e < edits; ++e)
            Mutate(input, seeds, rng);
        Run(input);
    }
    std::printf("%zu seeds and %zu mutations passed\n", seeds.size(), mutations);
    return 0;
}
