// Shared by the fuzz targets: the check that stops a run when a property
// fails, the splitting of an input into text fields, and a scratch file for
// the readers that take a path.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <unistd.h>

// libFuzzer's entry point, defined by every target. A target that needs a
// set-up once per process defines LLVMFuzzerInitialize as well.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace lunaquill::fuzz {

// An abort, so that libFuzzer keeps the input as a crash file and the replay
// driver writes it out (see ReplayMain.cpp).
[[noreturn]] inline void PropertyFailed(const char *what, const char *file, int line)
{
    fprintf(stderr, "%s:%d: property does not hold: %s\n", file, line, what);
    abort();
}

#define FUZZ_CHECK(condition) \
    ((condition) ? (void)0 : lunaquill::fuzz::PropertyFailed(#condition, __FILE__, __LINE__))

// The input cut at each line feed: field i is the text before the i-th one.
// Missing fields are empty, so every input gives `count` fields.
inline std::vector<std::string> Fields(const uint8_t *data, size_t size, size_t count)
{
    std::vector<std::string> fields(count);
    size_t field = 0;
    for (size_t i = 0; i < size && field < count; ++i) {
        if (data[i] == '\n')
            ++field;
        else
            fields[field] += (char)data[i];
    }
    return fields;
}

// A double from text as strtod reads it: decimal or hexadecimal, "inf",
// "nan", out-of-range values as infinities; 0 when there is no number.
inline double DoubleField(const std::string &text)
{
    return strtod(text.c_str(), nullptr);
}

// Where the scratch files go: memory when the system offers it, since on a
// disk every rewrite of a truncated file waits for the disk.
inline std::string ScratchFolder()
{
    if (access("/dev/shm", W_OK) == 0)
        return "/dev/shm";
    const char *folder = getenv("TMPDIR");
    return folder && *folder ? folder : "/tmp";
}

// One file per process, rewritten for every input.
class ScratchFile
{
public:
    ScratchFile()
    {
        path = ScratchFolder() + "/lunaquill-fuzz-XXXXXX";
        int fd = mkstemp(path.data());
        if (fd < 0) {
            perror("mkstemp");
            abort();
        }
        close(fd);
    }
    ~ScratchFile() { remove(path.c_str()); }

    const char *Write(const uint8_t *data, size_t size) const
    {
        FILE *file = fopen(path.c_str(), "wb");
        if (!file || fwrite(data, 1, size, file) != size || fclose(file) != 0) {
            perror(path.c_str());
            abort();
        }
        return path.c_str();
    }

private:
    std::string path;
};

} // namespace lunaquill::fuzz
