#pragma once

#include <string>

namespace quorvane::platform {

// The product's fixed places in the file system, each with the root folder put in front.
//
// The root is empty in everyday use. A sandbox, a test or the sample run sets it; a path inside a rule is
// never prefixed with it. A value object: safe from any thread.
class Locations {
public:
    // `root` is taken without its trailing "/". A path that resolves to the root of the file system counts as
    // none. `login` names the user whose rules file is meant.
    Locations(std::string root, std::string login);

    // The root from the environment variable QUORVANE_ROOT and the login name of the real user.
    static Locations fromEnvironment();

    // Whether there is a root: none of these are the product's real files.
    bool areSandbox() const { return !m_root.empty(); }

    std::string sharedFolder() const; // ends with "/"
    std::string userRulesFile() const;
    std::string exchangeFileName() const; // what an export is called unless the user says otherwise
    std::string failSafeFile() const;
    std::string failSafeStrictMarker() const;
    std::string learningModeMarker() const;
    std::string preferencesFile() const;
    std::string extrasFolder() const; // where suggested rules are stored; ends with "/"

    std::string systemFolder() const; // ends with "/"
    std::string mainSystemRulesFile() const;
    std::string paranoidSystemRulesFile() const;
    std::string noticeIconFile() const;
    std::string userGuideFile() const;

private:
    std::string m_root;
    std::string m_login;
};

} // namespace quorvane::platform
