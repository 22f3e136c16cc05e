// The main of a fuzz target that is built without a fuzzing engine: runs the target once on every
// file named, and on every file below every folder named. Ends with 0, or with 2 if a path cannot
// be read or no file was found; a broken property traps.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * bytes, std::size_t size);

namespace {

namespace fs = std::filesystem;

[[noreturn]] void refuse(fs::path const & path, char const * reason) {
    std::fprintf(stderr, "%s: %s\n", path.c_str(), reason);
    std::exit(2);
}

std::vector<fs::path> filesBelow(fs::path const & path) {
    std::vector<fs::path> files;
    std::error_code error;
    if (fs::is_regular_file(path, error)) {
        files.push_back(path);
        return files;
    }
    for (fs::recursive_directory_iterator at(path, error), end; !error && at != end;
         at.increment(error)) {
        if (at->is_regular_file()) {
            files.push_back(at->path());
        }
    }
    if (error) {
        refuse(path, error.message().c_str());
    }
    return files;
}

void replay(fs::path const & path) {
    std::ifstream stream(path, std::ios::binary | std::ios::ate);
    if (!stream) {
        refuse(path, "cannot be read");
    }
    auto const size = static_cast<std::size_t>(stream.tellg());
    // A block of the exact size: the address sanitizer sees a read of one byte too many.
    std::unique_ptr<char[]> const bytes(new char[size]);
    stream.seekg(0);
    if (!stream.read(bytes.get(), static_cast<std::streamsize>(size))) {
        refuse(path, "cannot be read");
    }
    LLVMFuzzerTestOneInput(reinterpret_cast<std::uint8_t const *>(bytes.get()), size);
}

}  // namespace

int main(int argc, char ** argv) {
    std::size_t count = 0;
    for (int i = 1; i < argc; ++i) {
        for (fs::path const & path : filesBelow(argv[i])) {
            replay(path);
            ++count;
        }
    }
    std::printf("%zu inputs replayed\n", count);
    if (count == 0) {
        std::fprintf(stderr, "no input was found\n");
        return 2;
    }
    return 0;
}
