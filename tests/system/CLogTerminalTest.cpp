// What the log prints. The library's lines are wide, so each look at them is a child process with a fresh stdout.
#include <Orlix/system/CLogUtility.h>

#include <Orlix/foundation/CStringConverter.h>

#include "support/ChildProcess.h"
#include "support/LogSettings.h"
#include "support/MemoryLimit.h"
#include "support/Sanitizer.h"

#include <gtest/gtest.h>

#include <clocale>
#include <random>
#include <string>

using namespace Orlix;
using OrlixTest::CLogSettings;
using OrlixTest::runInChild;

namespace {

const char* const ALL_LEVELS = "info=\"true\" warning=\"true\" error=\"true\" debug=\"true\"";

/** All that fnBody prints in a process of its own, by the rules of a locale. */
template <class F> std::string printed(F fnBody, const char* pLocale = "C.UTF-8") {
    const OrlixTest::tagChildResult result = runInChild([&] {
        std::setlocale(LC_ALL, pLocale);
        fnBody();
        return 0;
    });
    EXPECT_EQ(result.iExitCode, 0);
    return result.strOutput;
}

std::string printedText(const wchar_t* pText, const char* pLocale = "C.UTF-8") {
    return printed([=] { CLog::writeLog(L"L", L"S", pText); }, pLocale);
}

void logAll() {
    CLog::info(L"S", L"1");
    CLog::warning2(L"S", L"2");
    CLog::error2(L"S", L"3");
    CLog::debug2(L"S", L"4");
}

class CConfigProbe : public CConfigParser {
public:
    static bool exists() { return s_pInstance != nullptr; }
};

TEST(CLogTerminal, WithoutSettingsAllLevelsButDebugArePrinted) {
    EXPECT_EQ(printed(logAll), "[Info][S] 1\r\n[Warning][S] 2\r\n[Error][S] 3\r\n");
}

TEST(CLogTerminal, StringsArePrintedAsTheirTextsAre) {
    EXPECT_EQ(printed([] {
                  const CLogSettings settings("", ALL_LEVELS);
                  CLog::info(CString(L"S"), CString(L"1"));
                  CLog::warning2(CString(L"S"), CString(L"2"));
                  CLog::error2(CString(L"S"), CString(L"3"));
                  CLog::debug2(CString(L"S"), CString(L"4"));
                  CLog::info(CString(), CString(L""));
              }),
              "[Info][S] 1\r\n[Warning][S] 2\r\n[Error][S] 3\r\n[Debug][S] 4\r\n[Info][] \r\n");
}

// Switches, not a threshold: each of the sixteen states, with the fifth flag, which no level has, both ways.
TEST(CLogTerminal, EachLevelHasASwitchOfItsOwn) {
    const struct {
        const char *pName, *pLine;
    } aryLevel[] = {{"info", "[Info][S] 1\r\n"},
                    {"warning", "[Warning][S] 2\r\n"},
                    {"error", "[Error][S] 3\r\n"},
                    {"debug", "[Debug][S] 4\r\n"}};
    for (unsigned int uiState = 0; uiState < 32; ++uiState) {
        std::string strSettings = uiState & 16 ? "performance=\"true\"" : "performance=\"false\"";
        std::string strExpected;
        for (unsigned int i = 0; i < 4; ++i) {
            const bool bOn = (uiState >> i & 1) != 0;
            strSettings += std::string(" ") + aryLevel[i].pName + (bOn ? "=\"true\"" : "=\"false\"");
            strExpected += bOn ? aryLevel[i].pLine : "";
        }
        EXPECT_EQ(printed([&] {
                      const CLogSettings settings("", strSettings);
                      logAll();
                  }),
                  strExpected)
            << strSettings;
    }
}

TEST(CLogTerminal, ALevelIsReadAnewAtEachCall) {
    EXPECT_EQ(printed([] {
                  CLogSettings settings("", "info=\"false\"");
                  CLog::info(L"S", L"1");
                  settings.load("", "info=\"true\"");
                  CLog::info(L"S", L"2");
                  settings.load("terminal=\"false\"", "info=\"true\"");
                  CLog::info(L"S", L"3");
              }),
              "[Info][S] 2\r\n");
}

TEST(CLogTerminal, WriteLogAsksForNoLevel) {
    EXPECT_EQ(printed([] {
                  const CLogSettings settings("", "info=\"false\" warning=\"false\" error=\"false\" debug=\"false\"");
                  CLog::writeLog(L"Info", L"S", L"text");
                  CLog::writeLog(L"Any word", L"and", L"source");
                  logAll();
              }),
              "[Info][S] text\r\n[Any word][and] source\r\n");
}

TEST(CLogTerminal, CanBeSwitchedOff) {
    EXPECT_EQ(printed([] {
                  const CLogSettings settings("terminal=\"false\"", ALL_LEVELS);
                  logAll();
                  CLog::writeLog(L"L", L"S", L"text %d %%");
              }),
              "");
}

template <class TFront> void logAllForms() {
    TFront::info(L"1");
    TFront::info(CString(L"2"));
    TFront::warning2(L"3");
    TFront::warning2(CString(L"4"));
    TFront::error2(L"5");
    TFront::error2(CString(L"6"));
    TFront::debug2(L"7");
    TFront::debug2(CString(L"8"));
    TFront::info(nullptr);
    TFront::info(CString());
}

std::string allForms(const std::string& strSource) {
    return "[Info][" + strSource + "] 1\r\n[Info][" + strSource + "] 2\r\n[Warning][" + strSource +
           "] 3\r\n[Warning][" + strSource + "] 4\r\n[Error][" + strSource + "] 5\r\n[Error][" + strSource +
           "] 6\r\n[Debug][" + strSource + "] 7\r\n[Debug][" + strSource + "] 8\r\n[Info][" + strSource +
           "] \r\n[Info][" + strSource + "] \r\n";
}

TEST(CLogTerminal, EachFrontLogsUnderItsName) {
    EXPECT_EQ(printed([] {
                  const CLogSettings settings("", ALL_LEVELS);
                  logAllForms<CLogEngine>();
                  logAllForms<CLogStudio>();
                  logAllForms<CLogBuild>();
              }),
              allForms("OrlixEngine") + allForms("OrlixStudio") + allForms("OrlixBuild"));
}

TEST(CLogTerminal, TheNamesAreConstantsToo) {
    EXPECT_STREQ(ORLIX_ENGINE.getBuffer(), L"OrlixEngine");
    EXPECT_STREQ(ORLIX_STUDIO.getBuffer(), L"OrlixStudio");
    EXPECT_STREQ(ORLIX_BUILD.getBuffer(), L"OrlixBuild");
    EXPECT_EQ(printed([] { CLog::info(ORLIX_STUDIO, L"text"); }), "[Info][OrlixStudio] text\r\n");
}

TEST(CLogTerminal, NullPrintsAsEmpty) {
    EXPECT_EQ(printedText(nullptr), "[L][S] \r\n");
    EXPECT_EQ(printedText(L""), "[L][S] \r\n");
    EXPECT_EQ(printed([] { CLog::writeLog(nullptr, nullptr, nullptr); }), "[][] \r\n");
    EXPECT_EQ(printed([] { CLog::info(nullptr, L"text"); }), "[Info][] text\r\n");
}

// The line goes to the terminal as a format, on purpose. What asks for an argument gets none and stays.
TEST(CLogTerminal, PercentSignsAreReadAsInAFormat) {
    const struct {
        const wchar_t* pText;
        const char* pPrinted;
    } aryRow[] = {{L"%%", "%"},
                  {L"%%%%", "%%"},
                  {L"%", "%"},
                  {L"%%%", "%%"},
                  {L"100%", "100%"},
                  {L"100%%", "100%"},
                  {L"100 % sure", "100 % sure"},
                  {L"%d", "%d"},
                  {L"%s", "%s"},
                  {L"%ls and %ls", "%ls and %ls"},
                  {L"%n", "%n"},
                  {L"%m", "%m"},
                  {L"%5%%", "%5%"},
                  {L"%1$*2$.*3$Lf%hhn", "%1$*2$.*3$Lf%hhn"},
                  {L"%%d", "%d"},
                  {L"%%s", "%ls"}, // "%s" becomes "%ls" wherever it stands in a format
                  {L"%%%s", "%%s"},
                  {L"%%%%s", "%%ls"},
                  {L"%%s%%s%%", "%ls%ls%"},
                  {L"%%ls", "%ls"},
                  {L"%s%%s%d%%d", "%s%ls%d%d"}};
    for (const auto& row : aryRow)
        EXPECT_EQ(printedText(row.pText), "[L][S] " + std::string(row.pPrinted) + "\r\n");
    EXPECT_EQ(printed([] { CLog::writeLog(L"%%", L"%d", L"%%s"); }), "[%][%d] %ls\r\n") << "the whole line is one";
}

std::wstring randomText(std::mt19937& random, bool bAscii) {
    static const wchar_t* const PIECES[] = {L"%%", L"s",           L"%%s",          L"l",    L" ",      L"\r\n", L"a",
                                            L"\t", L"longer text", L"\x4E2D\x6587", L"\xE4", L"\x1F600"};
    std::wstring strText;
    const unsigned int uiPieces = static_cast<unsigned int>(sizeof(PIECES) / sizeof(PIECES[0])) - (bAscii ? 3 : 0);
    for (unsigned int uiCount = random() % 400; uiCount != 0; --uiCount)
        strText += PIECES[random() % uiPieces];
    return strText;
}

// Texts without directives that lack an argument: what comes out is what printf makes of the line.
TEST(CLogTerminal, PrintsWhatPrintfMakesOfTheLine) {
    for (const char* pLocale : {"C", "C.UTF-8"}) {
        for (unsigned int uiSeed = 0; uiSeed < 40; ++uiSeed) {
            std::mt19937 random(uiSeed);
            const std::wstring strText = randomText(random, *pLocale == 'C' && uiSeed % 2 == 0);
            const std::wstring strLine = L"[L][S] " + strText + L"\r\n";
            EXPECT_EQ(printedText(strText.c_str(), pLocale),
                      printed([&] { CStringConverter::printf(strLine.c_str()); }, pLocale))
                << pLocale << ", seed " << uiSeed;
        }
    }
}

constexpr std::size_t FRAME = 9; // "[L][S] " and CR LF
constexpr std::size_t LONGEST = 524287;

TEST(CLogTerminal, ALineTooLongToFormatIsLost) {
    for (const wchar_t ch : {L'x', L'%'}) {
        const std::wstring strLongest(LONGEST - FRAME, ch);
        const std::size_t uiPrinted = ch == L'%' ? (strLongest.size() + 1) / 2 : strLongest.size();
        EXPECT_EQ(printedText(strLongest.c_str()), "[L][S] " + std::string(uiPrinted, static_cast<char>(ch)) + "\r\n");
        EXPECT_EQ(printedText((strLongest + ch).c_str()), "");
    }
}

TEST(CLogTerminal, TheFirstCallMakesTheSettings) {
    EXPECT_EQ(printed([] {
                  if (CConfigProbe::exists())
                      std::abort();
                  CLog::debug2(L"S", L"off"); // a level that is off asks, too
                  if (!CConfigProbe::exists())
                      std::abort();
              }),
              "");
}

#if !defined(ORLIX_TEST_ASAN) && !defined(ORLIX_TEST_TSAN)
TEST(CLogTerminal, WithoutMemoryTheDefaultsAreInForce) {
    const std::wstring strLong(600, L'x'), strEscaped(600, L'%');
    EXPECT_EQ(printed([&] {
                  std::fputws(L"first\n", stdout); // gives the stream its buffers
                  if (!OrlixTest::limitMemory(1 << 20))
                      std::abort();
                  OrlixTest::useUpMemory();
                  logAll();
                  CLog::error2(L"S", strLong.c_str()); // lost: what is too long for the stack
                  CLog::error2(L"S", strEscaped.c_str());
                  CLog::error2(L"S", L"%%");
                  CLog::initialize();
                  if (CConfigProbe::exists())
                      std::abort();
              }),
              "first\n[Info][S] 1\r\n[Warning][S] 2\r\n[Error][S] 3\r\n[Error][S] %\r\n");
}
#endif
} // namespace
