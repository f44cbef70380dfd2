// Runs a fuzz target without libFuzzer, so that CTest replays it with any
// compiler: every file of the corpus folders named on the command line, then
// generated inputs from a fixed seed (random bytes, and corpus files with
// bytes changed, inserted, erased, repeated and spliced in from other files),
// so that every run replays the same inputs:
//   <target> [--runs=N] FOLDER...
// The input that fails is written to replay-failure-<target> in the current
// folder, ready for the libFuzzer build to rerun.
#include "FuzzSupport.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include <fcntl.h>

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv) __attribute__((weak));
extern "C" void __sanitizer_set_death_callback(void (*callback)()) __attribute__((weak));

namespace {

// The input under test and where it goes when the run dies (written from a
// signal handler: plain system calls only).
const std::string *currentInput;
char failurePath[512];

void SaveCurrentInput()
{
    if (!currentInput)
        return;
    int fd = open(failurePath, O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (fd < 0)
        return;
    ssize_t written = write(fd, currentInput->data(), currentInput->size());
    (void)written;
    close(fd);
    currentInput = nullptr;
}

void OnAbort(int)
{
    SaveCurrentInput();
    signal(SIGABRT, SIG_DFL);
    raise(SIGABRT);
}

// Number texts at the edges of what readers convert.
const char *const kNumberTexts[] = {
    "0", "-0", "1", "-1", "23", "24", "180", "-180", "180.0000001", "90", "-90", "360", "1e308",
    "-1e308", "1e309", "nan", "inf", "-inf", "2147483647", "-2147483648", "2147483648",
    "99999999999", "0x1p-1074", "4.9e-324", "1e-320", "0.5", "   7", "+-1", "1,5", "true",
    "false", "yes",
};

class Generator
{
public:
    Generator(const std::vector<std::string> &corpus) : corpus(corpus)
    {
        // Bytes of the corpus come up most: they carry the format's structure.
        for (const std::string &file : corpus)
            alphabet.insert(alphabet.end(), file.begin(), file.end());
        std::sort(alphabet.begin(), alphabet.end());
        alphabet.erase(std::unique(alphabet.begin(), alphabet.end()), alphabet.end());
        if (alphabet.empty())
            alphabet.push_back('\n');
    }

    std::string Next(int run)
    {
        std::string input;
        if (corpus.empty() || run % 4 == 0) {
            for (size_t n = Below(600); n > 0; --n)
                input += Byte();
            return input;
        }
        input = corpus[Below(corpus.size())];
        for (size_t n = 1 + Below(8); n > 0; --n)
            Mutate(input);
        if (input.size() > kMaxSize)
            input.resize(kMaxSize);
        return input;
    }

private:
    static constexpr size_t kMaxSize = 1 << 16;

    size_t Below(size_t n) { return n == 0 ? 0 : random() % n; }
    char Byte() { return Below(4) ? alphabet[Below(alphabet.size())] : (char)random(); }

    void Mutate(std::string &input)
    {
        const size_t at = Below(input.size() + 1);
        switch (Below(6)) {
        case 0:
            if (at < input.size())
                input[at] = Byte();
            break;
        case 1:
            for (size_t n = 1 + Below(16); n > 0; --n)
                input.insert(input.begin() + at, Byte());
            break;
        case 2:
            input.erase(at, 1 + Below(16));
            break;
        case 3: { // a piece repeated: long lines and long lists
            std::string piece = input.substr(Below(input.size() + 1), 1 + Below(64));
            for (size_t n = 1 + Below(Below(2) ? 8 : 400); n > 0; --n)
                input.insert(at, piece);
            break;
        }
        case 4: {
            const std::string &other = corpus[Below(corpus.size())];
            input.insert(at, other.substr(Below(other.size() + 1), Below(128)));
            break;
        }
        default:
            input.insert(at, kNumberTexts[Below(std::size(kNumberTexts))]);
            break;
        }
    }

    const std::vector<std::string> &corpus;
    std::vector<char> alphabet;
    std::mt19937 random{20250228};
};

} // namespace

int main(int argc, char **argv)
{
    if (LLVMFuzzerInitialize)
        LLVMFuzzerInitialize(&argc, &argv);
    int runs = 5000;
    std::vector<std::string> corpus;
    for (int i = 1; i < argc; ++i) {
        if (strncmp(argv[i], "--runs=", 7) == 0) {
            runs = atoi(argv[i] + 7);
            continue;
        }
        std::vector<std::filesystem::path> files;
        for (const auto &entry : std::filesystem::directory_iterator(argv[i]))
            if (entry.is_regular_file())
                files.push_back(entry.path());
        std::sort(files.begin(), files.end()); // the same order on every machine
        for (const auto &file : files) {
            std::ifstream in(file, std::ios::binary);
            corpus.emplace_back(std::istreambuf_iterator<char>(in),
                                std::istreambuf_iterator<char>());
        }
    }

    const std::string name = std::filesystem::path(argv[0]).filename().string();
    snprintf(failurePath, sizeof failurePath, "replay-failure-%s", name.c_str());
    signal(SIGABRT, OnAbort);
    if (__sanitizer_set_death_callback)
        __sanitizer_set_death_callback(SaveCurrentInput);

    const auto start = std::chrono::steady_clock::now();
    auto run = [](const std::string &input) {
        currentInput = &input;
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(input.data()), input.size());
        currentInput = nullptr;
    };
    for (const std::string &input : corpus)
        run(input);
    Generator generator(corpus);
    for (int i = 0; i < runs; ++i)
        run(generator.Next(i));
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    std::cout << name << ": " << corpus.size() << " corpus files and " << runs
              << " generated inputs in " << elapsed.count() << " s\n";
    return 0;
}
