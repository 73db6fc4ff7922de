#include <Orlix/system/CPath.h>

#include <Orlix/system/CImpPath.h>

#include "support/ChildProcess.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <type_traits>

using namespace Orlix;
using OrlixTest::CTempFolder;
using OrlixTest::runInChild;
using OrlixTest::toText;

namespace {

static_assert(std::is_base_of<IPath, CImpPath>::value && sizeof(CImpPath) == sizeof(IPath), "no fields");
static_assert(std::is_abstract<IPath>::value && std::has_virtual_destructor<IPath>::value, "an interface");
static_assert(std::is_same<decltype(CPath::getProjectFolder()), const CString&>::value, "the stored text itself");

std::wstring textOf(const CString& strText) {
    return strText.getBuffer() ? std::wstring(strText.getBuffer(), strText.length()) : std::wstring();
}

/** Whatever a test stored is gone with it. */
class CPathFolders : public testing::Test {
protected:
    void TearDown() override { CPath::clearData(); }
};

// ---- One path in, one result out

struct tagRow {
    const wchar_t* pPath;
    const wchar_t* pResult;
};

template <std::size_t N> void expectRows(CString (*fnTried)(const CString&), const tagRow (&aryRow)[N]) {
    for (const tagRow& row : aryRow)
        EXPECT_EQ(textOf(fnTried(row.pPath)), row.pResult) << "of " << testing::PrintToString(std::wstring(row.pPath));
}

TEST(CPath, TellsATrailingDelimiterOfEitherKind) {
    EXPECT_TRUE(CPath::hasTrailingPathDelimiter(L"a/"));
    EXPECT_TRUE(CPath::hasTrailingPathDelimiter(L"a\\"));
    EXPECT_TRUE(CPath::hasTrailingPathDelimiter(L"/"));
    EXPECT_FALSE(CPath::hasTrailingPathDelimiter(L"a/b"));
    EXPECT_FALSE(CPath::hasTrailingPathDelimiter(L"\\b"));
    EXPECT_FALSE(CPath::hasTrailingPathDelimiter(L""));
    EXPECT_FALSE(CPath::hasTrailingPathDelimiter(CString()));
}

TEST(CPath, AddsASlashUnlessADelimiterIsThere) {
    expectRows(CPath::addTrailingPathDelimiter,
               {{L"a", L"a/"}, {L"a/", L"a/"}, {L"a\\", L"a\\"}, {L"/", L"/"}, {L"a.b", L"a.b/"}, {L"", L""}});
}

TEST(CPath, TakesOneTrailingDelimiterAway) {
    // A lone delimiter stays: no length is left, which stands for all the rest.
    expectRows(CPath::deleteTrailingPathDelimiter, {{L"a/", L"a"},
                                                    {L"a\\", L"a"},
                                                    {L"a//", L"a/"},
                                                    {L"a", L"a"},
                                                    {L"/a", L"/a"},
                                                    {L"/", L"/"},
                                                    {L"\\", L"\\"},
                                                    {L"", L""}});
}

TEST(CPath, TheNameStartsBehindTheLastDelimiter) {
    const struct {
        const wchar_t* pPath;
        unsigned int uiStart;
    } aryRow[] = {{L"a/b.txt", 2}, {L"a\\b.txt", 2}, {L"a/b\\c", 4}, {L"a\\b/c", 4}, {L"a/", 2},
                  {L"/a", 1},      {L"/", 1},        {L"a", 0},      {L"", 0}};
    for (const auto& row : aryRow)
        EXPECT_EQ(CPath::getFileNameStartIndex(row.pPath), row.uiStart) << textOf(row.pPath).c_str();
}

TEST(CPath, TheFolderEndsInItsDelimiter) {
    expectRows(
        CPath::getFileFolder,
        {{L"a/b.txt", L"a/"}, {L"a\\b.txt", L"a\\"}, {L"/a", L"/"}, {L"a/b/", L"a/b/"}, {L"a.txt", L""}, {L"", L""}});
}

TEST(CPath, TheFolderWithoutItsDelimiter) {
    // Where the only delimiter comes first nothing is left in front of it, and the whole path stays: meant so.
    expectRows(CPath::getFileFolderNoLastSeparator, {{L"a/b.txt", L"a"},
                                                     {L"a\\b.txt", L"a"},
                                                     {L"/x/a", L"/x"},
                                                     {L"a//", L"a/"},
                                                     {L"/a", L"/a"},
                                                     {L"/", L"/"},
                                                     {L"a.txt", L""},
                                                     {L"", L""}});
}

TEST(CPath, TheNameIsWhatFollowsTheLastDelimiter) {
    expectRows(CPath::getFileName,
               {{L"a/b.txt", L"b.txt"}, {L"a\\b.txt", L"b.txt"}, {L"a/", L""}, {L"b", L"b"}, {L"/", L""}, {L"", L""}});
}

TEST(CPath, TheExtensionIndexLooksAtTheFoldersToo) {
    const struct {
        const wchar_t* pPath;
        unsigned int uiStart;
    } aryRow[] = {{L"a.txt", 2}, {L"a.b/c", 2}, {L"a.b.c", 4}, {L".a", 1}, {L"a.", 2}, {L"a", 0}, {L"", 0}};
    for (const auto& row : aryRow)
        EXPECT_EQ(CPath::getFileExternStartIndex(row.pPath), row.uiStart) << textOf(row.pPath).c_str();
}

TEST(CPath, TheTitleIsTheNameWithoutItsExtension) {
    // A name with nothing in front of its only dot is its own title as a whole, and that is meant.
    expectRows(CPath::getFileTitle, {{L"a/b.txt", L"b"},
                                     {L"a\\b.txt", L"b"},
                                     {L"b.tar.gz", L"b.tar"},
                                     {L"a.b/c", L"c"},
                                     {L"a.b/c.d", L"c"},
                                     {L".profile", L".profile"},
                                     {L"a/.profile", L".profile"},
                                     {L"a/..", L"."},
                                     {L"a.", L"a"},
                                     {L"a/", L""},
                                     {L"a.b/", L""},
                                     {L"c", L"c"},
                                     {L"", L""}});
}

TEST(CPath, TheExtensionStandsInTheName) {
    expectRows(CPath::getFileExtern, {{L"a/b.txt", L"txt"},
                                      {L"a\\b.txt", L"txt"},
                                      {L"b.tar.gz", L"gz"},
                                      {L"a.b/c", L""},
                                      {L"a.b\\c", L""},
                                      {L".profile", L"profile"},
                                      {L"a/.profile", L"profile"},
                                      {L"a.", L""},
                                      {L"a.b/", L""},
                                      {L"c", L""},
                                      {L"", L""}});
}

struct tagPairRow {
    const wchar_t* pPath;
    const wchar_t* pPart;
    const wchar_t* pResult;
};

TEST(CPath, ChangesTheExtension) {
    const tagPairRow aryRow[] = {{L"a.txt", L"", L"a"},
                                 {L"a.txt", L"png", L"a.png"},
                                 {L"x/a.b.txt", L"c", L"x/a.b.c"},
                                 {L"a", L"png", L"a.png"},
                                 {L"a", L"", L"a"},
                                 {L"a.b/c", L"png", L"a.b/c.png"},
                                 {L"a.b/c", L"", L"a.b/c"},
                                 {L"a.", L"png", L"a.png"},
                                 {L"a.", L"", L"a"},
                                 {L"a/", L"png", L"a/.png"},
                                 {L"a/.b", L"", L"a/"},
                                 {L"", L"png", L""},
                                 // nothing is left in front of the dot, and the whole path stays
                                 {L".profile", L"", L".profile"}};
    for (const tagPairRow& row : aryRow)
        EXPECT_EQ(textOf(CPath::changeFileExtern(row.pPath, row.pPart)), row.pResult) << textOf(row.pPath).c_str();
}

TEST(CPath, ChangesTheTitle) {
    const tagPairRow aryRow[] = {{L"x/a.txt", L"b", L"x/b.txt"},
                                 {L"x\\a.txt", L"b", L"x\\b.txt"},
                                 {L"x/a", L"b", L"x/b"},
                                 {L"x.y/a", L"b", L"x.y/b"},
                                 {L"x/a.", L"b", L"x/b."},
                                 {L"x/", L"b", L"x/b"},
                                 {L"x/a.txt", L"", L"x/.txt"},
                                 {L"", L"b", L""},
                                 // Without a folder the old name stays in front: settled so.
                                 {L"a.txt", L"b", L"a.txtb.txt"},
                                 {L"a", L"b", L"ab"}};
    for (const tagPairRow& row : aryRow)
        EXPECT_EQ(textOf(CPath::changeFileTitle(row.pPath, row.pPart)), row.pResult) << textOf(row.pPath).c_str();
}

// ---- From one place to another

TEST(CPath, GeneratesRelativePaths) {
    const struct {
        const wchar_t* pFrom;
        bool bFolder;
        const wchar_t* pTo;
        const wchar_t* pResult;
    } aryRow[] = {
        {L"/a/b/c.txt", false, L"/a/d/e.txt", L"../d/e.txt"},
        {L"/a/b", true, L"/a/b/c.txt", L"./c.txt"},
        {L"/a/b", false, L"/a/b/c.txt", L"./b/c.txt"}, // b is a file there, in the folder a
        {L"/a/b/", false, L"/a/b/c.txt", L"./c.txt"},  // but not with a "/" at its end
        {L"/x/y/", false, L"/a/b", L"./a/b"},          // the first segments differ: nothing goes up, as settled
        {L"/a/x/y/", true, L"/a/b", L"../../b"},       // a later difference goes up by its levels
        {L"/a/x/b/", true, L"/a/b/c", L"../c"},        // b matches again behind the difference: no level up
        {L"a/b/", true, L"/a/b/c", L"./c"},            // a "/" at the start counts for nothing
        {L"/A/", true, L"/a/b", L"./a/b"},             // the case counts
        {L"/a/", true, L"/a/", L"./"},                 // nothing is left
        {L"/a/b/", true, L"/a/", L"../"},              // only the way up is left
        {L"/ab/", true, L"/abc/d", L"./abc/d"},        // a segment matches with its "/" only
        {L"a.txt", false, L"b.txt", L"./b.txt"},       // the start has no folder
        {L"/", true, L"/a", L"./a"},
        {L"/", true, L"//a", L"./a"},         // the added "/" is a segment, which matches
        {L"a\\b", false, L"a\\c", L"./a\\c"}, // the backslash parts no segments
        {L"a/b\\c", true, L"a/d", L"../d"},
        {L"", true, L"/a", L""},
        {L"/a", true, L"", L""},
    };
    for (const auto& row : aryRow)
        EXPECT_EQ(textOf(CPath::generateRelativePath(row.pFrom, row.bFolder, row.pTo)), row.pResult)
            << textOf(row.pFrom).c_str() << " to " << textOf(row.pTo).c_str();
}

TEST(CPath, GeneratesAbsolutePaths) {
    const tagPairRow aryRow[] = {
        {L"/a/b/", L"../c", L"/a/c"},
        {L"/a", L"./c", L"/a/c"},
        {L"/a", L"c", L"/a/c"},
        {L"/a", L"/c", L"/c"},
        {L"/a/", L"c", L"/a/c"},
        {L"/a//", L"c", L"/a//c"},  // one "/" is dropped
        {L"/a\\", L"c", L"/a\\/c"}, // the backslash is none
        {L"/a/b/c", L"../../d", L"/a/d"},
        {L"/a", L"./../c", L"/a/../c"}, // only what leads the path is resolved, and "./" once
        {L"/a", L"././c", L"/a/./c"},
        {L"/a/b", L".././c", L"/a/./c"},
        {L"/a", L"b/../c", L"/a/b/../c"},
        {L"/a", L"./", L"/a/"},
        {L"/a/b", L"../", L"/a/"},
        {L"/a", L"..", L"/a/.."}, // no "/" behind it
        {L"/a", L"..\\c", L"/a/..\\c"},
        {L"/a", L"../c", L"/a/c"}, // a base without a level left to go up to stays whole
        {L"a", L"../c", L"a/c"},
        {L"a/b", L"../../../c", L"a/c"},
        {L"/", L"c", L"//c"}, // so does a lone "/", which is not dropped
        {L"", L"c", L""},
        {L"/a", L"", L""},
    };
    for (const tagPairRow& row : aryRow)
        EXPECT_EQ(textOf(CPath::generateAbsolutePath(row.pPath, row.pPart)), row.pResult)
            << textOf(row.pPath).c_str() << " and " << textOf(row.pPart).c_str();
}

TEST(CImpPath, TakesEmptyTextsAsTheyStand) {
    CImpPath imp;
    EXPECT_EQ(textOf(imp.generateRelativePath(L"", true, L"a")), L"./a");
    EXPECT_EQ(textOf(imp.generateRelativePath(L"a/", true, CString())), L"./");
    EXPECT_EQ(textOf(imp.generateAbsolutePath(L"", L"../a")), L"/a");
    EXPECT_EQ(textOf(imp.generateAbsolutePath(L"a", CString())), L"a/");
}

// ---- The two folders

TEST_F(CPathFolders, AreKeptUntilCleared) {
    CPath::setApplicationFolder(L"/app");
    CPath::setProjectFolder(L"/project");
    EXPECT_EQ(textOf(CPath::getApplicationFolder()), L"/app");
    EXPECT_EQ(textOf(CPath::getProjectFolder()), L"/project");
    CPath::clearData();
    EXPECT_TRUE(CPath::getProjectFolder().isEmpty());
    EXPECT_NE(textOf(CPath::getApplicationFolder()), L"/app");
}

TEST_F(CPathFolders, TheProjectFolderIsStoredAsItIs) {
    CPath::setProjectFolder(L".");
    EXPECT_EQ(textOf(CPath::getProjectFolder()), L".");
    EXPECT_EQ(&CPath::getProjectFolder(), &CPath::getProjectFolder());
}

/** The application folder as a child sees it that works in another directory, as the bytes of its text. */
std::string applicationFolderIn(const std::string& strDirectory, const wchar_t* pStored, bool bGone = false) {
    return runInChild([&] {
               if (chdir(strDirectory.c_str()) != 0 || (bGone && rmdir(strDirectory.c_str()) != 0))
                   return 1;
               CPath::setApplicationFolder(pStored);
               const std::wstring strFirst = textOf(CPath::getApplicationFolder());
               if (strFirst != textOf(CPath::getApplicationFolder()))
                   return 2;
               std::printf("%ls", strFirst.c_str());
               return 0;
           })
        .strOutput;
}

TEST_F(CPathFolders, TheApplicationFolderIsTheCurrentOneUntilARealOneIsSet) {
    const CTempFolder temp;
    for (const wchar_t* pStored : {L"", L".", L"./bin", L"../bin", L".hidden"})
        EXPECT_EQ(applicationFolderIn(temp.getPath(), pStored), temp.getPath()) << textOf(pStored).c_str();
    EXPECT_EQ(applicationFolderIn(temp.getPath(), nullptr), temp.getPath());
    EXPECT_EQ(applicationFolderIn(temp.getPath(), L"/opt/app"), "/opt/app");
    EXPECT_EQ(applicationFolderIn(temp.getPath(), L"app"), "app");
}

TEST_F(CPathFolders, TheApplicationFolderIsStoredAtItsFirstReading) {
    const CTempFolder temp;
    mkdir((temp / "later").c_str(), 0755);
    const auto result = runInChild([&] {
        CPath::setApplicationFolder(L".");
        if (chdir(temp.getPath().c_str()) != 0)
            return 1;
        const std::wstring strFirst = textOf(CPath::getApplicationFolder());
        if (chdir((temp / "later").c_str()) != 0)
            return 2;
        return strFirst == textOf(CPath::getApplicationFolder()) ? 0 : 3;
    });
    EXPECT_EQ(result.iExitCode, 0);
}

TEST_F(CPathFolders, TheApplicationFolderIsEmptyInADirectoryThatIsGone) {
    const CTempFolder temp;
    mkdir((temp / "gone").c_str(), 0755);
    EXPECT_EQ(applicationFolderIn(temp / "gone", L".", true), "");
}

TEST_F(CPathFolders, TheApplicationFolderGoesOverTheLinkThatTheEnvironmentNames) {
    const CTempFolder temp;
    mkdir((temp / "real").c_str(), 0755);
    ASSERT_EQ(symlink("real", (temp / "link").c_str()), 0);
    const auto result = runInChild([&] {
        setenv("PWD", (temp / "link").c_str(), 1);
        if (chdir((temp / "link").c_str()) != 0)
            return 1;
        return textOf(CPath::getApplicationFolder()) == textOf(toText(temp / "link")) ? 0 : 2;
    });
    EXPECT_EQ(result.iExitCode, 0);
}

TEST_F(CPathFolders, TheApplicationFolderMayHaveAnyCharacters) {
    const CTempFolder temp;
    const std::string strName = "\xE7\x95\x8C\xC3\xA9";
    mkdir((temp / strName).c_str(), 0755);
    const auto result = runInChild([&] {
        if (chdir((temp / strName).c_str()) != 0)
            return 1;
        return textOf(CPath::getFileName(CPath::getApplicationFolder())) == L"\u754C\u00E9" ? 0 : 2;
    });
    EXPECT_EQ(result.iExitCode, 0);
}

// ---- Against a model

/** Every operation once more, said in other words on another string class. */
namespace Model {

const wchar_t* const DELIMITERS = L"/\\";

std::wstring part(const std::wstring& strText, std::size_t uiStart, std::size_t uiCount) {
    if (uiStart >= strText.size())
        return L"";
    return strText.substr(uiStart, uiCount == 0 ? std::wstring::npos : uiCount);
}

bool endsIn(const std::wstring& strText, const wchar_t* pChars) {
    return !strText.empty() && std::wcschr(pChars, strText.back()) != nullptr;
}

std::size_t behindLast(const std::wstring& strText, const wchar_t* pChars) {
    const std::size_t uiFound = strText.find_last_of(pChars);
    return uiFound == std::wstring::npos ? 0 : uiFound + 1;
}

std::size_t nameStart(const std::wstring& strPath) { return behindLast(strPath, DELIMITERS); }
std::size_t externStart(const std::wstring& strPath) { return behindLast(strPath, L"."); }
bool hasExtern(const std::wstring& strPath) {
    return strPath.substr(nameStart(strPath)).find(L'.') != std::wstring::npos;
}

std::wstring addTrailing(const std::wstring& s) { return s.empty() || endsIn(s, DELIMITERS) ? s : s + L'/'; }
std::wstring deleteTrailing(const std::wstring& s) { return endsIn(s, DELIMITERS) ? part(s, 0, s.size() - 1) : s; }
std::wstring folder(const std::wstring& s) { return s.substr(0, nameStart(s)); }
std::wstring folderNoLast(const std::wstring& s) {
    return nameStart(s) == 0 ? std::wstring() : part(s, 0, nameStart(s) - 1);
}
std::wstring name(const std::wstring& s) { return s.substr(nameStart(s)); }
std::wstring extension(const std::wstring& s) { return hasExtern(s) ? s.substr(externStart(s)) : std::wstring(); }

std::wstring title(const std::wstring& s) {
    const std::wstring strName = name(s);
    const std::size_t uiDot = strName.rfind(L'.');
    return uiDot == std::wstring::npos || uiDot == 0 ? strName : strName.substr(0, uiDot);
}

std::wstring changeExtern(const std::wstring& s, const std::wstring& strExtern) {
    if (s.empty())
        return L"";
    std::wstring strStem = s;
    if (hasExtern(s))
        strStem.resize(externStart(s) - 1);
    if (!strExtern.empty())
        return strStem + L'.' + strExtern;
    return strStem.empty() ? s : strStem;
}

std::wstring changeTitle(const std::wstring& s, const std::wstring& strTitle) {
    if (s.empty())
        return L"";
    return (nameStart(s) == 0 ? s : folder(s)) + strTitle + (hasExtern(s) ? L'.' + extension(s) : std::wstring());
}

std::wstring relative(const std::wstring& strFrom, bool bFolder, const std::wstring& strTo) {
    if (strFrom.empty() || strTo.empty())
        return L"";
    std::wstring a = strFrom[0] == L'/' ? strFrom.substr(1) : strFrom;
    if (!endsIn(a, L"/"))
        a = bFolder ? a + L'/' : folder(a);
    std::wstring b = strTo[0] == L'/' ? strTo.substr(1) : strTo;
    std::wstring r;
    for (std::size_t uiFrom = 0, uiEnd; (uiEnd = a.find(L'/', uiFrom)) != std::wstring::npos; uiFrom = uiEnd + 1) {
        const std::wstring strSegment = a.substr(uiFrom, uiEnd + 1 - uiFrom);
        if (b.compare(0, strSegment.size(), strSegment) == 0)
            b.erase(0, strSegment.size());
        else if (uiFrom != 0)
            r += L"../";
        else
            break;
    }
    return (r.empty() ? L"./" : r) + b;
}

std::wstring absolute(std::wstring strBase, std::wstring strPath) {
    if (strBase.empty() || strPath.empty())
        return L"";
    if (strPath[0] == L'/')
        return strPath;
    if (strBase.size() > 1 && strBase.back() == L'/')
        strBase.pop_back();
    if (strPath.compare(0, 2, L"./") == 0)
        return strBase + L'/' + strPath.substr(2);
    for (; strPath.compare(0, 3, L"../") == 0; strPath.erase(0, 3)) {
        const std::size_t uiCut = strBase.rfind(L'/');
        if (uiCut != std::wstring::npos && uiCut != 0)
            strBase.resize(uiCut);
    }
    return strBase + L'/' + strPath;
}
} // namespace Model

/** Short texts of few characters, so that all the forms meet, and of delimiters and dots above all. */
std::wstring randomPath(std::mt19937& random) {
    static const wchar_t ALPHABET[] = L"///\\..aabA";
    std::wstring strPath(random() % 13, L'\0');
    for (wchar_t& ch : strPath)
        ch = ALPHABET[random() % 10];
    if (random() % 4 == 0)
        strPath.insert(0, random() % 2 == 0 ? L"../" : L"./");
    return strPath;
}

TEST(CPath, AgreesWithTheModelOnRandomPaths) {
    std::mt19937 random(20210531);
    for (int i = 0; i < 50000; ++i) {
        const std::wstring a = randomPath(random), b = randomPath(random);
        const CString strA(a.c_str()), strB(b.c_str());
        const bool bFolder = random() % 2 == 0;
        SCOPED_TRACE(testing::PrintToString(a) + " and " + testing::PrintToString(b));
        EXPECT_EQ(CPath::hasTrailingPathDelimiter(strA), Model::endsIn(a, Model::DELIMITERS));
        EXPECT_EQ(textOf(CPath::addTrailingPathDelimiter(strA)), Model::addTrailing(a));
        EXPECT_EQ(textOf(CPath::deleteTrailingPathDelimiter(strA)), Model::deleteTrailing(a));
        EXPECT_EQ(CPath::getFileNameStartIndex(strA), Model::nameStart(a));
        EXPECT_EQ(textOf(CPath::getFileFolder(strA)), Model::folder(a));
        EXPECT_EQ(textOf(CPath::getFileFolderNoLastSeparator(strA)), Model::folderNoLast(a));
        EXPECT_EQ(textOf(CPath::getFileName(strA)), Model::name(a));
        EXPECT_EQ(CPath::getFileExternStartIndex(strA), Model::externStart(a));
        EXPECT_EQ(textOf(CPath::getFileTitle(strA)), Model::title(a));
        EXPECT_EQ(textOf(CPath::getFileExtern(strA)), Model::extension(a));
        EXPECT_EQ(textOf(CPath::changeFileExtern(strA, strB)), Model::changeExtern(a, b));
        EXPECT_EQ(textOf(CPath::changeFileTitle(strA, strB)), Model::changeTitle(a, b));
        EXPECT_EQ(textOf(CPath::generateRelativePath(strA, bFolder, strB)), Model::relative(a, bFolder, b));
        EXPECT_EQ(textOf(CPath::generateAbsolutePath(strA, strB)), Model::absolute(a, b));
        if (testing::Test::HasFailure())
            return;
    }
}
} // namespace
