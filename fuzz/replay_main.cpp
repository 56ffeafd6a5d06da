// Runs a fuzz target without a fuzzer: each file given, each file of each directory given, then
// pseudo-random mutations of them. The sequence is the same at every run. An input that brings the
// program down is left in fuzz_NAME.input.
//
//     fuzz_NAME [--mutations N] [--seconds S] FILE-OR-DIRECTORY...
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
// There under the sanitizers only.
extern "C" __attribute__((weak)) void __sanitizer_set_death_callback(void (*callback)());

namespace {

using Input = std::vector<std::uint8_t>;

constexpr std::size_t maxInputBytes = 1 << 16;
constexpr int maxChangesPerInput = 4;

struct Options {
    long mutations = 0;
    double seconds = 10.0;  // for the mutations; the files always run whole
    std::vector<std::filesystem::path> files;
};

void AddFiles(const std::filesystem::path& path, std::vector<std::filesystem::path>& files) {
    if (!std::filesystem::is_directory(path)) {
        files.push_back(path);
        return;
    }
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path)) {
        if (entry.is_regular_file()) files.push_back(entry.path());
    }
}

Options ReadOptions(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word == "--mutations" && i + 1 < argc) {
            options.mutations = std::atol(argv[++i]);
        } else if (word == "--seconds" && i + 1 < argc) {
            options.seconds = std::atof(argv[++i]);
        } else {
            AddFiles(word, options.files);
        }
    }
    std::sort(options.files.begin(), options.files.end());
    return options;
}

/// Changes inputs in the ways in which files go wrong: bytes altered, lost, repeated, moved from
/// one file into another, words where no word belongs.
class Mutator {
  public:
    Input Mutate(const std::vector<Input>& seeds) {
        Input input = seeds[Below(seeds.size())];
        for (std::size_t changes = 1 + Below(maxChangesPerInput); changes > 0; --changes) {
            Change(input, seeds);
        }
        if (input.size() > maxInputBytes) input.resize(maxInputBytes);
        return input;
    }

  private:
    /// Not a distribution of the library, which may differ from one to the next.
    std::size_t Below(std::size_t bound) { return bound ? random_() % bound : 0; }
    auto Place(Input& input) { return input.begin() + static_cast<long>(Below(input.size() + 1)); }

    void Change(Input& input, const std::vector<Input>& seeds) {
        static constexpr std::string_view words[] = {"\n", "%n%s", "-1", "2147483648", "1e999",
                                                     " ",  "(",    "\"", "\t",         "0"};
        const auto place = Place(input);
        const auto rest = static_cast<std::size_t>(input.end() - place);
        switch (Below(6)) {
            case 0:
                if (rest) *place = static_cast<std::uint8_t>(Below(256));
                return;
            case 1:
                if (rest) *place ^= static_cast<std::uint8_t>(1u << Below(8));
                return;
            case 2:
                input.erase(place, place + static_cast<long>(Below(rest + 1)));
                return;
            case 3: {
                const Input part(place, place + static_cast<long>(Below(rest + 1)));
                input.insert(Place(input), part.begin(), part.end());
                return;
            }
            case 4: {
                Input other = seeds[Below(seeds.size())];
                const auto from = Place(other);
                const auto length = Below(static_cast<std::size_t>(other.end() - from) + 1);
                input.insert(place, from, from + static_cast<long>(length));
                return;
            }
            default: {
                const std::string_view word = words[Below(std::size(words))];
                input.insert(place, word.begin(), word.end());
            }
        }
    }

    std::mt19937_64 random_{20231};
};

/// The input at work and where to leave it.
struct Work {
    Input input;
    std::string trace;
};
Work work;

/// Runs while the program goes down: no more than a write.
void LeaveInput() {
    std::ofstream(work.trace, std::ios::binary)
        .write(reinterpret_cast<const char*>(work.input.data()),
               static_cast<std::streamsize>(work.input.size()));
}

void LeaveInputOnSignal(int number) {
    LeaveInput();
    std::signal(number, SIG_DFL);
    std::raise(number);
}

void CatchFailures(const std::filesystem::path& program) {
    work.trace = program.filename().string() + ".input";
    if (__sanitizer_set_death_callback) __sanitizer_set_death_callback(LeaveInput);
    std::signal(SIGABRT, LeaveInputOnSignal);
}

void Run(const Input& input) {
    // A copy of the exact size, so that a read past the end is seen.
    work.input = Input(input.begin(), input.end());
    LLVMFuzzerTestOneInput(work.input.data(), work.input.size());
}

}  // namespace

int main(int argc, char** argv) {
    const Options options = ReadOptions(argc, argv);
    if (options.files.empty()) {
        std::cerr << "no input files\n";
        return EXIT_FAILURE;
    }
    CatchFailures(argv[0]);
    std::vector<Input> seeds;
    for (const auto& path : options.files) {
        std::ifstream file(path, std::ios::binary);
        if (!file) {
            std::cerr << "cannot read " << path << "\n";
            return EXIT_FAILURE;
        }
        seeds.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
        Run(seeds.back());
    }
    const auto end = std::chrono::steady_clock::now() +
                     std::chrono::milliseconds(static_cast<long>(options.seconds * 1000.0));
    Mutator mutator;
    long done = 0;
    for (; done < options.mutations && std::chrono::steady_clock::now() < end; ++done) {
        Run(mutator.Mutate(seeds));
    }
    std::cout << seeds.size() << " files and " << done << " mutations of them\n";
    return EXIT_SUCCESS;
}
