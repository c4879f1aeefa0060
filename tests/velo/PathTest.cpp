#include "velo/Path.h"

#include "platform/WidePath.h"
#include "support/TemporaryFolder.h"
#include "support/Testing.h"

namespace Path = VeloTools::Path;

TEST(PathTest, PartsOfAPath)
{
    const std::tuple<std::wstring, std::wstring, std::wstring, std::wstring> cases[] = {
        {L"", L"", L"", L""},
        {L"file.xml", L"", L"file.xml", L"file"},
        {L"/file", L"/", L"file", L"file"},
        {L"/a.b/Formuły QRL.tar.gz", L"/a.b", L"Formuły QRL.tar.gz", L"Formuły QRL.tar"},
        {L"a/b/", L"a/b", L"", L""},
        {L"a/.hidden", L"a", L".hidden", L".hidden"},
        {L"a/name.", L"a", L"name.", L"name"},
    };
    for (const auto& [path, folder, name, stem] : cases) {
        SCOPED_TRACE(WidePath::ToPath(path));
        EXPECT_EQ(Path::GetFileFolder(path), folder);
        EXPECT_EQ(Path::GetFileName(path, true), name);
        EXPECT_EQ(Path::GetFileName(path, false), stem);
    }
}

TEST(PathTest, FilesAndFolders)
{
    const TemporaryFolder folder;
    const auto deep = folder / "Szablony" / "\xC5\xBC\xB3";
    EXPECT_TRUE(Path::CreateDirectoryIfNotExist(deep));
    EXPECT_TRUE(Path::CreateDirectoryIfNotExist(deep));
    for (const char* name : {"b.xml", "A.XML", "c.xmlx", "xml"})
        std::ofstream(folder / name) << "x";
    std::ofstream(deep / "d.xml") << "x";
    std::filesystem::create_directory(folder / "e.xml");
    std::filesystem::create_directory_symlink(folder.GetPath(), folder / "Szablony" / "loop");
    EXPECT_FALSE(Path::CreateDirectoryIfNotExist(folder / "b.xml"));
    EXPECT_TRUE(Path::FileExist(folder / "b.xml"));
    EXPECT_FALSE(Path::FileExist(deep));
    EXPECT_TRUE(Path::DirectoryExist(deep));
    EXPECT_FALSE(Path::DirectoryExist(folder / "b.xml"));

    const std::wstring top = WidePath::ToWide(folder.GetPath());
    std::vector<std::wstring> files = {L"kept"};
    EXPECT_EQ(Path::FindAllFilesInFolder(top, L".xml", false, files), 2U);
    EXPECT_EQ(files, (std::vector<std::wstring>{L"kept", top + L"/A.XML", top + L"/b.xml"}));
    EXPECT_EQ(Path::FindAllFilesInFolder(top, L".xml", true, files), 3U);
    EXPECT_EQ(files.size(), 6U);
    EXPECT_EQ(WidePath::ToPath(files[4]), deep / "d.xml") << "a name that is no UTF-8 stays usable";
    EXPECT_EQ(Path::FindAllFilesInFolder(top + L"/missing", L".xml", true, files), 0U);

    EXPECT_TRUE(Path::RemovePath(top + L"/Szablony"));
    EXPECT_TRUE(Path::FileExist(folder / "b.xml")) << "removing must not follow the link";
    EXPECT_FALSE(Path::RemovePath(top + L"/Szablony"));
    EXPECT_TRUE(Path::RemovePath(top + L"/b.xml"));
    EXPECT_FALSE(Path::RemovePath(L""));
}
