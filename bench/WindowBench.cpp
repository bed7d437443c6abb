#include "bench/WindowBench.h"

#include "windows/WindowLook.h"

#include <QApplication>

#include <cstdio>
#include <filesystem>

#include <unistd.h>

namespace quorvane::bench {

namespace fs = std::filesystem;

User::User(const std::string& file, std::string folder)
    : m_folder(std::move(folder))
{
    fs::create_directories(fs::path(m_locations.userRulesFile()).parent_path());
    fs::copy_file(file, m_locations.userRulesFile());
    m_store = rules::RuleManager::initWithCurrentUserConfiguration(m_locations, m_log);
    m_store->userRulesSnapshot();
    m_store->indexLargeGroups();
}

workflow::RulesDocument& User::document()
{
    if (!m_document)
        m_document = std::make_unique<workflow::RulesDocument>(*m_store, m_run,
            workflow::DocumentOwner{
                .program = "bench", .stateFolder = stateFolder(), .background = &m_background},
            m_log);
    return *m_document;
}

int runWindowBench(const char* name, int argumentCount, char** arguments,
    const std::function<void(const std::string& file, const std::string& folder)>& print)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication qtApplication(argumentCount, arguments);
    if (argumentCount != 2) {
        std::fprintf(stderr, "usage: %s FILE\n", name);
        return 2;
    }
    windows::applyWindowLook(qtApplication);
    const std::string folder = arguments[1] + std::string(".bench-") + std::to_string(getpid());
    fs::create_directory(folder);
    print(arguments[1], folder);
    fs::remove_all(folder);
    return 0;
}

} // namespace quorvane::bench
