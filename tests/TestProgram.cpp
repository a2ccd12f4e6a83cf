#include "tests/TestProgram.h"

#include <cstdio>
#include <map>
#include <string>

namespace tidemark::testing {

namespace {

std::map<std::string, TestProgram::Main>& programs() {
    static std::map<std::string, TestProgram::Main> all;
    return all;
}

}  // namespace

TestProgram::TestProgram(const char* name, Main main) {
    const std::string qualified(name);
    // The whole of a name that is not qualified: one past the end of it is its beginning.
    programs().emplace(qualified.substr(qualified.rfind(':') + 1), main);
}

}  // namespace tidemark::testing

/// TEST [QtTest's arguments…]
int main(int argc, char** argv) {
    const auto& programs = tidemark::testing::programs();
    const auto program = argc < 2 ? programs.end() : programs.find(argv[1]);
    if (program == programs.end()) {
        std::fputs("Name one of these tests:\n", stderr);
        for (const auto& [name, main] : programs)
            std::fprintf(stderr, "  %s\n", name.c_str());
        return 2;
    }
    argv[1] = argv[0];
    return program->second(argc - 1, argv + 1);
}
