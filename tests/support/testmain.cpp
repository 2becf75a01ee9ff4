// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/testregistry.h"

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>

namespace {

std::map<std::string, testregistry::Run, std::less<>>& tests()
{
    static std::map<std::string, testregistry::Run, std::less<>> all;
    return all;
}

std::string stem(std::string_view path)
{
    path.remove_prefix(path.find_last_of("/\\") + 1);
    return std::string(path.substr(0, path.find('.')));
}

} // namespace

testregistry::Registration::Registration(const char* sourceFile, Run run)
{
    tests().emplace(stem(sourceFile), run);
}

/// Usage: PROGRAM TEST [ARGUMENT OF QT TEST]...
int main(int argc, char* argv[])
{
    const auto test = argc > 1 ? tests().find(std::string_view(argv[1])) : tests().end();
    if (test == tests().end()) {
        std::fprintf(stderr, "usage: %s TEST [ARGUMENT]...\nTests:\n", argv[0]);
        for (const auto& [name, run] : tests())
            std::fprintf(stderr, "  %s\n", name.c_str());
        return EXIT_FAILURE;
    }
    argv[1] = argv[0];
    return test->second(argc - 1, argv + 1);
}
