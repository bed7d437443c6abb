#include "windows/FilePanel.h"

#include <gtest/gtest.h>

namespace quorvane {

TEST(PathFromPanel, DecodesNothingButTheSpace)
{
    const struct {
        const char* why;
        const char* chosen;
        const char* path;
    } cases[] = {
        {"a plain path stays", "/usr/bin/env", "/usr/bin/env"},
        {"spaces come back", "/My  Tools/a b", "/My  Tools/a b"},
        {"a hash sign keeps its escape", "/a#b", "/a%23b"},
        {"so does a question mark", "/a?b", "/a%3Fb"},
        {"so does a percent sign", "/100%", "/100%25"},
        {"so does what is beyond ASCII", "/caf\xC3\xA9", "/caf%C3%A9"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(pathFromPanel(QUrl::fromLocalFile(QString::fromUtf8(c.chosen))), c.path) << c.why;
}

} // namespace quorvane
