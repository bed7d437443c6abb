#include "desktop/DesktopAuthority.h"
#include "platform/Locations.h"
#include "windows/AuthenticationWindow.h"

#include <QApplication>

#include <cstdio>
#include <string_view>

// authority-probe admin|finger|password: prints the system's answer to this query, "yes" or "no".
int main(int argumentCount, char** arguments)
{
    using namespace quorvane;
    const QApplication application(argumentCount, arguments);
    const std::string_view question = argumentCount == 2 ? arguments[1] : "";
    windows::AuthenticationWindow prompt({});
    desktop::DesktopAuthority authority(
        desktop::systemBusAddress(platform::Locations::fromEnvironment().areSandbox()), prompt);
    bool answer = false;
    if (question == "admin")
        answer = authority.isAdminUser();
    else if (question == "finger")
        answer = authority.verifyFingerprint("verify authorization");
    else if (question == "password")
        answer = authority.verifyPassword("verify authorization");
    else
        return 2;
    std::puts(answer ? "yes" : "no");
    return 0;
}
