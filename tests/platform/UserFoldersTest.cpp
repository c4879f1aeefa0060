#include "platform/UserFolders.h"

#include "platform/Handles.h"
#include "platform/ModulePath.h"
#include "support/Testing.h"

TEST(UserFoldersTest, DocumentsOfTheDesktopsFile)
{
    const std::tuple<std::string, std::string> cases[] = {
        {"", ""},
        {"# XDG_DOCUMENTS_DIR=\"$HOME/No\"\nXDG_DESKTOP_DIR=\"$HOME/Pulpit\"\n", ""},
        {"XDG_DESKTOP_DIR=\"$HOME/Pulpit\"\n  XDG_DOCUMENTS_DIR=\"$HOME/Moje dokumenty\"\n",
         "/home/ala/Moje dokumenty"},
        {"XDG_DOCUMENTS_DIR=\"/data/a\\\"b\"", "/data/a\"b"},
        {"XDG_DOCUMENTS_DIR=\"relative\"", ""},
        {"XDG_DOCUMENTS_DIR=\"$HOME/\"", "/home/ala/"},
        {"XDG_DOCUMENTS_DIR=\"/unclosed", "/unclosed"},
    };
    for (const auto& [text, folder] : cases) {
        SCOPED_TRACE(text);
        EXPECT_EQ(UserFolders::ReadDocumentsFolder(text, "/home/ala").native(), folder);
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
