#include "cli/Commands.h"
#include "cli/Output.h"
#include "codesign/Codesign.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

namespace quorvane::cli {

namespace {

using Json = nlohmann::ordered_json;

// The results for one program, which is read once for all of them.
struct SignatureAnswers {
    std::int32_t state = codesign::signatureState::cannotTell;
    std::optional<std::int32_t> strictState; // none for a process
    std::optional<std::string> identifier;
    std::optional<std::string> teamIdentifier;
    std::int32_t platformIdentifier = 0;
    std::string certInfo;
};

SignatureAnswers answersOf(const codesign::CodeObject* code, std::uint32_t flags)
{
    return {codeSignState(code, flags), std::nullopt, codeSignText(code, codesign::kSecCodeInfoIdentifier),
        codeSignText(code, codesign::kSecCodeInfoTeamIdentifier), codeSignPlatformIdentifier(code),
        codeSignCertInfo(code)};
}

SignatureAnswers answersForPath(const std::string& path)
{
    const auto code = codesign::getCodeRefWithPath(path);
    SignatureAnswers answers = answersOf(code.get(), codesign::basicFlags);
    answers.strictState = codeSignState(code.get(), codesign::strictFlags);
    return answers;
}

SignatureAnswers answersForProcess(std::int32_t pid)
{
    return answersOf(codesign::getCodeRefWithPID(pid).get(), codesign::dynamicFlags);
}

Json textOrNull(const std::optional<std::string>& text)
{
    return text ? Json(*text) : Json(nullptr);
}

std::string answersLine(Json subject, const SignatureAnswers& answers)
{
    subject["state"] = answers.state;
    if (answers.strictState)
        subject["strictState"] = *answers.strictState;
    subject["identifier"] = textOrNull(answers.identifier);
    subject["teamIdentifier"] = textOrNull(answers.teamIdentifier);
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

std::int32_t pidSpelled(const std::string& text)
{
    std::int32_t pid = -1;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, pid);
    if (error != std::errc() || stop != end || pid < 0)
        throw CLI::ValidationError("--pid", "'" + text + "' is not the number of a process");
    return pid;
}

class CodesignCommand : public Command {
public:
    CLI::App& addTo(CLI::App& program) override
    {
        CLI::App& command
            = *program.add_subcommand("codesign", "Print what the code signature of macOS programs says");
        command.footer(
            "States: 1 unsigned, 2 signed and valid, 3 failed or invalid, 4 not verifiable, 5 unsupported,\n"
            "6 cannot tell. The strict state covers the whole program file; the resources of a bundle are "
            "in\n"
            "neither. The network is never asked.");
        command.add_flag("--json", m_asJson, "One JSON object a line");
        auto* paths = command.add_option("PATH", m_paths, "A program file or a bundle");
        command.add_option("--pid", m_spelledPids, "A running process")->type_name("N")->excludes(paths);
        return command;
    }

    void check() override
    {
        for (const std::string& spelled : m_spelledPids)
            m_pids.push_back(pidSpelled(spelled));
        if (m_paths.empty() && m_pids.empty())
            throw CLI::RequiredError("PATH or --pid");
    }

    int run(const CommandContext& /*context*/) override
    {
        Output output;
        for (const std::string& path : m_paths) {
            const SignatureAnswers answers = answersForPath(path);
            output.write(m_asJson ? answersLine({{"path", path}}, answers) : textLines(path, answers));
        }
        for (const std::int32_t pid : m_pids) {
            const SignatureAnswers answers = answersForProcess(pid);
            output.write(m_asJson ? answersLine({{"pid", pid}}, answers)
                                  : textLines("process " + std::to_string(pid), answers));
        }
        return output.finish() ? 0 : 1;
    }

private:
    std::vector<std::string> m_paths;
    std::vector<std::string> m_spelledPids;
    std::vector<std::int32_t> m_pids;
    bool m_asJson = false;
};

} // namespace

std::unique_ptr<Command> makeCodesignCommand()
{
    return std::make_unique<CodesignCommand>();
}

} // namespace quorvane::cli
