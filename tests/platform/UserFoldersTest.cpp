#include "platform/UserFolders.h"

#include "platform/Handles.h"
#include "platform/ModulePath.h"
#include "support/Testing.h"

TEST(UserFoldersTest, DocumentsOfTheDesktopsFile)
{
    struct Case {
        std::string text;
        std::string folder;
    };
    const std::vector<Case> cases = {
        {"", ""},
        {"# XDG_DOCUMENTS_DIR=\"$HOME/No\"\nXDG_DESKTOP_DIR=\"$HOME/Pulpit\"\n", ""},
        {"XDG_DESKTOP_DIR=\"$HOME/Pulpit\"\n  XDG_DOCUMENTS_DIR=\"$HOME/Moje dokumenty\"\n",
         "/home/ala/Moje dokumenty"},
        {"XDG_DOCUMENTS_DIR=\"/data/a\\\"b\"", "/data/a\"b"},
        {"XDG_DOCUMENTS_DIR=\"relative\"", ""},
        {"XDG_DOCUMENTS_DIR=\"$HOME/\"", "/home/ala/"},
        {"XDG_DOCUMENTS_DIR=\"/unclosed", "/unclosed"},
    };
    for (const Case& oneCase : cases) {
        SCOPED_TRACE(oneCase.text);
        EXPECT_EQ(UserFolders::ReadDocumentsFolder(oneCase.text, "/home/ala").native(), oneCase.folder);
    }
}

TEST(ModulePathTest, KnowsModulesByAddress)
{
    static int S_object = 0;
    const auto executable = ModulePath::GetFile(nullptr);
    EXPECT_EQ(executable.filename(), "platform_tests");
    EXPECT_EQ(ModulePath::GetFile(reinterpret_cast<HINSTANCE>(&S_object)), executable);
    int local = 0;
    EXPECT_EQ(ModulePath::GetFile(reinterpret_cast<HINSTANCE>(&local)), "");
}
