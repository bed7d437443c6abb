#include "workflow/ProgramSettings.h"

#include "platform/Account.h"
#include "platform/FileBytes.h"
#include "platform/FileDescriptor.h"
#include "platform/Unicode.h"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <limits>
#include <string_view>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace quorvane::workflow {

namespace {

constexpr std::size_t largestFile = 1U << 20U; // bytes

// One setting: its section and key in the file, and its conversion to and from the value.
struct Setting {
    std::string_view section;
    std::string_view key;
    std::function<bool(std::string_view text, ProgramSettings&)> take; // false: not a value of this setting
    std::function<std::string(const ProgramSettings&)> give;
};

bool takeTruth(std::string_view text, bool& value)
{
    value = text == "true";
    return value || text == "false";
}

template <typename Number> bool takeNumber(std::string_view text, Number largest, Number& value)
{
    Number number = 0;
    const auto [end, failed] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (failed != std::errc() || end != text.data() + text.size() || number > largest)
        return false;
    value = number;
    return true;
}

const std::vector<Setting>& allSettings()
{
    constexpr std::uint32_t mostDays = 36500;
    constexpr auto mostBytes = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    static const std::vector<Setting> all = {
        {"rules", "wholeLines",
            [](std::string_view text, ProgramSettings& settings) {
                return takeTruth(text, settings.wholeLines);
            },
            [](const ProgramSettings& settings) { return settings.wholeLines ? "true" : "false"; }},
        {"history", "days",
            [](std::string_view text, ProgramSettings& settings) {
                return takeNumber(text, mostDays, settings.history.days);
            },
            [](const ProgramSettings& settings) { return std::to_string(settings.history.days); }},
        {"history", "bytes",
            [](std::string_view text, ProgramSettings& settings) {
                return takeNumber(text, mostBytes, settings.history.bytes);
            },
            [](const ProgramSettings& settings) { return std::to_string(settings.history.bytes); }},
    };
    return all;
}

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t start = text.find_first_not_of(blanks);
    return start == std::string_view::npos ? std::string_view()
                                           : text.substr(start, text.find_last_not_of(blanks) - start + 1);
}

// A parsed line. At most one of section and key is not empty; both are for comments and empty lines.
struct Line {
    std::string_view whole; // with its line end
    std::string_view section;
    std::string_view key;
    std::string_view value;
    bool isBroken = false;
};

Line readLine(std::string_view whole)
{
    Line line{whole, {}, {}, {}, false};
    const std::string_view text = trimmed(whole);
    if (text.empty() || text.front() == ';' || text.front() == '#')
        return line;
    const std::size_t equals = text.find('=');
    if (text.front() == '[' && text.back() == ']') {
        line.section = trimmed(text.substr(1, text.size() - 2));
    } else if (text.front() != '[' && equals != std::string_view::npos) {
        line.key = trimmed(text.substr(0, equals));
        line.value = trimmed(text.substr(equals + 1));
    }
    line.isBroken = line.section.empty() && line.key.empty();
    return line;
}

std::vector<Line> linesOf(std::string_view text)
{
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    std::vector<Line> lines;
    if (text.substr(0, byteOrderMark.size()) == byteOrderMark)
        text.remove_prefix(byteOrderMark.size());
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        const std::size_t length = end == std::string_view::npos ? text.size() : end + 1;
        lines.push_back(readLine(text.substr(0, length)));
        text.remove_prefix(length);
    }
    return lines;
}

const Setting* settingOf(std::string_view section, std::string_view key)
{
    for (const Setting& setting : allSettings())
        if (setting.section == section && setting.key == key)
            return &setting;
    return nullptr;
}

// The text of `file`; none when it exists but is not text of a sensible size.
std::optional<std::string> settingsText(const std::string& file)
{
    if (!platform::isAnythingAt(file))
        return "";
    auto text = platform::readSmallFile(file, largestFile);
    if (!text || !platform::isValidUtf8(*text) || text->find('\0') != std::string::npos)
        return std::nullopt;
    return text;
}

std::string settingLine(const Setting& setting, const ProgramSettings& settings)
{
    return std::string(setting.key) + "=" + setting.give(settings) + "\n";
}

// The text with the value of one setting. It replaces every line of the setting, or is inserted after the
// section's last key, or appended with its section at the end.
std::string withSetting(std::string_view text, const Setting& setting, const ProgramSettings& settings)
{
    std::string result;
    std::string_view section;
    std::size_t behindSection = std::string::npos; // in the result
    bool isThere = false;
    for (const Line& line : linesOf(text)) {
        if (!line.section.empty())
            section = line.section;
        const bool isOurs = section == setting.section && line.key == setting.key;
        result += isOurs ? settingLine(setting, settings) : std::string(line.whole);
        if (result.back() != '\n')
            result += '\n';
        isThere = isThere || isOurs;
        if (section == setting.section && (!line.section.empty() || !line.key.empty()))
            behindSection = result.size();
    }
    if (isThere)
        return result;
    if (behindSection != std::string::npos)
        return result.insert(behindSection, settingLine(setting, settings));
    return result + (result.empty() ? "" : "\n") + "[" + std::string(setting.section) + "]\n"
        + settingLine(setting, settings);
}

bool writeDurably(const platform::FileDescriptor& file, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = write(file.get(), bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return fsync(file.get()) == 0;
}

// Writes a temporary file beside `file` first, so that it is replaced atomically.
bool replaceFile(const std::string& file, std::string_view bytes)
{
    std::string beside = file + ".XXXXXX";
    const platform::FileDescriptor made(mkostemp(beside.data(), O_CLOEXEC)); // for its owner only
    if (!made)
        return false;
    if (writeDurably(made, bytes) && rename(beside.c_str(), file.c_str()) == 0)
        return true;
    const int reason = errno;
    unlink(beside.c_str());
    errno = reason;
    return false;
}

std::string reasonNow()
{
    return std::generic_category().message(errno);
}

} // namespace

std::string defaultSettingsFile()
{
    constexpr const char* name = "/quorvane/settings.ini";
    // Relative paths must be ignored in this variable.
    if (const char* folder = std::getenv("XDG_CONFIG_HOME"); folder != nullptr && *folder == '/')
        return folder + std::string(name);
    const std::string home = platform::homeDirectory();
    return home.empty() ? "" : home + "/.config" + name;
}

ReadProgramSettings readProgramSettings(const std::string& file)
{
    ReadProgramSettings result;
    const auto text = settingsText(file);
    if (!text) {
        result.problem = file + " could not be read; the usual settings are in force.";
        return result;
    }
    std::string faults;
    std::string_view section;
    std::size_t number = 0;
    for (const Line& line : linesOf(*text)) {
        ++number;
        if (!line.section.empty())
            section = line.section;
        const Setting* setting = settingOf(section, line.key);
        if (line.isBroken || (setting != nullptr && !setting->take(line.value, result.settings)))
            faults += (faults.empty() ? "" : ", ") + std::to_string(number);
    }
    if (!faults.empty())
        result.problem
            = file + ": line " + faults + " could not be used; the usual settings are in force there.";
    return result;
}

std::optional<std::string> writeProgramSettings(const std::string& file, const ProgramSettings& settings)
{
    if (file.empty())
        return "There is no home folder to keep the settings in.";
    std::error_code failed;
    // A symbolic link is kept: its target is replaced.
    const std::string real = std::filesystem::weakly_canonical(file, failed).string();
    if (!failed)
        std::filesystem::create_directories(std::filesystem::path(real).parent_path(), failed);
    if (failed)
        return file + ": " + failed.message();
    auto text = settingsText(real);
    if (!text && !platform::putUnreadFileAside(real))
        return file + " could not be read and not be set aside: " + reasonNow();
    std::string changed = text.value_or("");
    for (const Setting& setting : allSettings())
        changed = withSetting(changed, setting, settings);
    if (changed == text)
        return std::nullopt;
    return replaceFile(real, changed) ? std::nullopt : std::optional(file + ": " + reasonNow());
}

} // namespace quorvane::workflow
