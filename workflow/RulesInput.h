#pragma once

#include "rules/RulesFile.h"

#include <optional>
#include <string>
#include <string_view>

namespace quorvane::workflow {

// The contents of a command's input file: a regular file or a link to one, or a pipe created by a shell,
// which is read to its end. Folders, devices and named pipes are refused without being opened, so that
// nothing waits for a writer that may never come. Any thread.
class RulesInput {
public:
    // `nullDeviceIsEmpty`: accept /dev/null as an empty file.
    static RulesInput read(const std::string& path, bool nullDeviceIsEmpty = false);
    // Reads an open descriptor of any kind to its end; `name` is used in problems.
    static RulesInput readDescriptor(int descriptor, const std::string& name);

    // Why it could not be read; none when it was, whatever its contents. Then bytes() is complete.
    const std::optional<std::string>& problem() const { return m_problem; }
    // The same, and also set when it is not text: not UTF-8, or with a NUL byte.
    const std::optional<std::string>& textProblem() const { return m_textProblem; }

    // Valid as long as this object.
    std::string_view bytes() const { return m_file ? m_file->bytes() : std::string_view(m_bytes); }

private:
    void fail(const std::string& problem);
    void readPipe(int descriptor, const std::string& name);
    void readRegular(const std::string& path);

    std::optional<rules::RulesFileText> m_file;
    std::string m_bytes; // without a file
    std::optional<std::string> m_problem;
    std::optional<std::string> m_textProblem;
};

} // namespace quorvane::workflow
