#include "cli/Commands.h"
#include "cli/Output.h"
#include "codesign/Digests.h"

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace quorvane::cli {

namespace {

class DigestCommand : public Command {
public:
    CLI::App& addTo(CLI::App& program) override
    {
        CLI::App& command = *program.add_subcommand("digest", "Print the SHA-1 and SHA-256 of files");
        command.footer(
            "Two lines a file, as digest tools check them: \"SHA1 (PATH) = ...\" and \"SHA256 (PATH) = "
            "...\",\nin lowercase hexadecimal.");
        command.add_option("PATH", m_paths, "A file")->required();
        return command;
    }

    int run(const CommandContext& /*context*/) override
    {
        Output output;
        bool allRead = true;
        for (const std::string& path : m_paths) {
            const std::string name = printable(path);
            if (const auto digests = codesign::digestsOfFile(path)) {
                output.write("SHA1 (" + name + ") = " + digests->sha1 + "\n");
                output.write("SHA256 (" + name + ") = " + digests->sha256 + "\n");
            } else {
                printError("cannot read '" + name + "': it is missing, unreadable or no regular file");
                allRead = false;
            }
        }
        return output.finish() && allRead ? 0 : 1;
    }

private:
    std::vector<std::string> m_paths;
};

} // namespace

std::unique_ptr<Command> makeDigestCommand()
{
    return std::make_unique<DigestCommand>();
}

} // namespace quorvane::cli
