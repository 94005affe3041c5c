#include "extract/arguments.h"

#ifdef _WIN32
#include "extract/systemtext.h"

#include <windows.h>
#else
#include <csignal>
#endif

#ifdef _WIN32
int main()
{
    // The compiler's own arguments have lost what the player's code page does not hold, and name
    // files for "*".
    int count = 0;
    LPWSTR *given = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 1; given != nullptr && i < count; ++i) {
        arguments.push_back(Extract::narrow(given[i]));
    }
    LocalFree(given);
    return Extract::run(arguments);
}
#else
int main(int count, char **given)
{
    // A file that grows beyond what the system allows is a failure like any other.
    (void)std::signal(SIGXFSZ, SIG_IGN);
    return Extract::run({given + (count > 0 ? 1 : 0), given + count});
}
#endif
