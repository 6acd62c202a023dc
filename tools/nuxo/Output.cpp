// SPDX-License-Identifier: Apache-2.0
#include "Output.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <unistd.h>

namespace NuxoTool {

namespace {

bool isSet(const char* variable)
{
    const char* const value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

bool isDumbTerminal()
{
    const char* const terminal = std::getenv("TERM");
    return terminal != nullptr && std::strcmp(terminal, "dumb") == 0;
}

} // namespace

std::string writeOutput(const std::string& text)
{
    errno = 0;
    const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    if (written && std::fflush(stdout) == 0) return "";
    return errno != 0 ? std::strerror(errno) : "output error";
}

bool wantsColour(const std::string& choice)
{
    return wantsColour(choice, STDERR_FILENO);
}

bool wantsColour(const std::string& choice, int descriptor)
{
    if (choice != "auto") return choice == "always";
    return !isSet("NO_COLOR") && !isDumbTerminal() && isatty(descriptor) == 1;
}

} // namespace NuxoTool
