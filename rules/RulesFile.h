#pragma once

#include "platform/FileDescriptor.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

// The bytes of rules files, to and from disk. A symbolic link as last path component is refused.

namespace quorvane {

// The text of a rules file, or why there is none.
class RulesFileText {
public:
    // Reads the file whole. Its size is asked through a symbolic link, its opening refuses one.
    static RulesFileText read(const std::string& path);

    // Up to the first NUL byte; always valid UTF-8. Lasts as long as this object.
    std::string_view text() const { return m_text; }

    // True when there was nothing to read: missing, of size 0, or not UTF-8. No failure.
    bool isNothing() const { return m_nothing; }

    // Why rules that the file may hold are not in the text: it is not UTF-8, a NUL byte hides a part, or
    // reading failed. None when all of it is there, or when there is no file.
    std::optional<std::string> unreadReason() const { return m_unreadReason; }

    // True when there was no memory for it, which is a failure.
    bool isTooLargeForMemory() const { return m_errorMessage && !m_bytes; }

    // Why the file could not be read; none when it could or when there was nothing.
    const std::optional<std::string>& errorMessage() const { return m_errorMessage; }

private:
    void readFrom(const std::string& path);

    std::unique_ptr<char[]> m_bytes;
    std::string_view m_text;
    bool m_nothing = false;
    std::optional<std::string> m_errorMessage;
    std::optional<std::string> m_unreadReason;
};

// Writes a rules file line by line, in place: an existing file is emptied and keeps its inode.
class RulesFileWriter {
public:
    explicit RulesFileWriter(std::string path);

    bool isOpen() const { return static_cast<bool>(m_file); }

    // Writes one line with one call, cut as writtenPart() says. A failure is remembered and the next line can
    // follow.
    void writeLine(std::string_view line);

    // Sets the permission bits 0640 and closes the file.
    void finish();

    // The last failure; none when everything went well.
    const std::optional<std::string>& errorMessage() const { return m_errorMessage; }

private:
    std::string m_path;
    FileDescriptor m_file;
    std::optional<std::string> m_errorMessage;
};

} // namespace quorvane
