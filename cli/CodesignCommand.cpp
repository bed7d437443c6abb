#include "cli/Commands.h"
#include "cli/Output.h"
#include "codesign/Codesign.h"

#include <array>

#include <nlohmann/json.hpp>

namespace quorvane {

namespace {

using Json = nlohmann::ordered_json;

// The answers about one program, which is read once for all of them.
struct SignatureAnswers {
    std::int32_t state = signatureState::cannotTell;
    std::optional<std::int32_t> strictState; // none for a process
    std::optional<std::string> identifier;
    std::optional<std::string> teamIdentifier;
    std::int32_t platformIdentifier = 0;
    std::string certInfo;
};

SignatureAnswers answersOf(const CodeObject* code, std::uint32_t flags)
{
    return {codeSignState(code, flags), std::nullopt, codeSignText(code, kSecCodeInfoIdentifier),
        codeSignText(code, kSecCodeInfoTeamIdentifier), codeSignPlatformIdentifier(code),
        codeSignCertInfo(code)};
}

SignatureAnswers answersForPath(const std::string& path)
{
    const auto code = getCodeRefWithPath(path);
    SignatureAnswers answers = answersOf(code.get(), basicFlags);
    answers.strictState = codeSignState(code.get(), strictFlags);
    return answers;
}

SignatureAnswers answersForProcess(std::int32_t pid)
{
    return answersOf(getCodeRefWithPID(pid).get(), dynamicFlags);
}

Json jsonText(const std::optional<std::string>& text)
{
    return text ? Json(*text) : Json(nullptr);
}

std::string jsonLine(Json subject, const SignatureAnswers& answers)
{
    subject["state"] = answers.state;
    if (answers.strictState)
        subject["strictState"] = *answers.strictState;
    subject["identifier"] = jsonText(answers.identifier);
    subject["teamIdentifier"] = jsonText(answers.teamIdentifier);
    subject["platformIdentifier"] = answers.platformIdentifier;
    subject["certInfo"] = answers.certInfo;
    return subject.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string stateText(std::int32_t state)
{
    constexpr std::array<std::string_view, 7> words{"", "unsigned", "signed and valid",
        "signature failed or invalid", "signature not verifiable", "signature unsupported", "cannot tell"};
    return std::to_string(state).append(" (").append(words.at(static_cast<std::size_t>(state))).append(")");
}

std::string textLines(const std::string& subject, const SignatureAnswers& answers)
{
    const auto line = [](std::string_view title, const std::string& value) {
        std::string text = "    ";
        text.append(title).resize(18, ' ');
        return text + printable(value) + "\n";
    };
    return printable(subject) + "\n" + line("state", stateText(answers.state))
        + (answers.strictState ? line("strict state", stateText(*answers.strictState)) : "")
        + line("identifier", answers.identifier.value_or("none"))
        + line("team", answers.teamIdentifier.value_or("none"))
        + line("platform", std::to_string(answers.platformIdentifier))
        + line("certificate", answers.certInfo);
}

} // namespace

int codesignCommand(const std::vector<std::string>& paths, const std::vector<std::int32_t>& pids, bool asJson)
{
    Output output;
    for (const std::string& path : paths) {
        const SignatureAnswers answers = answersForPath(path);
        output.write(asJson ? jsonLine({{"path", path}}, answers) : textLines(path, answers));
    }
    for (const std::int32_t pid : pids) {
        const SignatureAnswers answers = answersForProcess(pid);
        output.write(asJson ? jsonLine({{"pid", pid}}, answers)
                            : textLines("process " + std::to_string(pid), answers));
    }
    return output.finish() ? 0 : 1;
}

} // namespace quorvane
