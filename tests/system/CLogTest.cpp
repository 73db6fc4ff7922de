// The log's file and the host's sink, with the terminal switched off.
#include <Orlix/system/CLogUtility.h>

#include "support/ChildProcess.h"
#include "support/Descriptors.h"
#include "support/LogSettings.h"
#include "support/MemoryLimit.h"
#include "support/Sanitizer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <random>
#include <string>
#include <sys/mman.h>
#include <sys/resource.h>
#include <thread>
#include <type_traits>
#include <unistd.h>
#include <vector>

using namespace Orlix;
using OrlixTest::CLogRecorder;
using OrlixTest::CLogSettings;
using OrlixTest::CTempFolder;
using OrlixTest::readWhole;
using OrlixTest::runInChild;
using OrlixTest::toText;
using OrlixTest::writeWhole;

namespace {

static_assert(std::is_abstract<ILogOuter>::value && std::has_virtual_destructor<ILogOuter>::value, "an interface");

const std::string BOM("\xFF\xFE");
constexpr unsigned int LIMIT = 20000;

/** Settings for a log file; everything else is off. */
class CFileLog {
public:
    explicit CFileLog(unsigned int uiLimit = LIMIT) : m_settings(attributes(uiLimit, "log")) {}

    void setFile(unsigned int uiLimit, const std::string& strName) { m_settings.load(attributes(uiLimit, strName)); }
    std::string getPath(const std::string& strName = "log") const { return m_settings / strName; }
    /** The bytes on the disk. */
    std::string read(const std::string& strName = "log") const { return readWhole(getPath(strName)); }
    bool exists(const std::string& strName = "log") const { return std::filesystem::exists(getPath(strName)); }
    /** What is in the file once it is closed. */
    std::string finish() const {
        CLog::unInitialize();
        return read();
    }

private:
    CLogSettings m_settings;

    static std::string attributes(unsigned int uiLimit, const std::string& strName) {
        return "terminal=\"false\" file_size=\"" + std::to_string(uiLimit) + "\" file_path_linux=\"" + strName + "\"";
    }
};

/** ASCII as it stands in the file. */
std::string utf16(const std::string& strText) {
    std::string strBytes;
    for (const char ch : strText)
        strBytes += {ch, '\0'};
    return strBytes;
}

std::string lineOf(const std::string& strText) { return utf16("[L][S] " + strText + "\r\n"); }

void log(const std::string& strText) {
    CLog::writeLog(L"L", L"S", std::wstring(strText.begin(), strText.end()).c_str());
}

// ---- Opening

TEST(CLog, BeginsANewFileWithTheByteOrderMark) {
    const CFileLog file;
    CLog::initialize();
    EXPECT_EQ(file.finish(), BOM);
}

TEST(CLog, WritesLinesAsUTF16) {
    const CFileLog file;
    CLog::initialize();
    CLogEngine::info(L"text");
    CLogStudio::error2(CString(L"\x4E2D"));
    EXPECT_EQ(file.finish(),
              BOM + utf16("[Info][OrlixEngine] text\r\n[Error][OrlixStudio] ") + "\x2D\x4E" + utf16("\r\n"));
}

TEST(CLog, CharactersAbove16BitsAreCut) {
    const CFileLog file;
    CLog::initialize();
    CLog::writeLog(L"L", L"S", L"\x1F600 \xFFFF");
    EXPECT_EQ(file.finish(), BOM + utf16("[L][S] ") + std::string("\x00\xF6 \x00\xFF\xFF", 6) + utf16("\r\n"));
}

TEST(CLog, OpensNoFileByItself) {
    const CFileLog file;
    CLogEngine::info(L"text");
    EXPECT_FALSE(file.exists());
}

TEST(CLog, WithoutAPathThereIsNoFile) {
    CFileLog file;
    const std::ptrdiff_t iBefore = OrlixTest::countDescriptors();
    file.setFile(LIMIT, "");
    CLog::initialize();
    EXPECT_EQ(OrlixTest::countDescriptors(), iBefore);
    const CLogSettings settings; // the attribute is missing altogether
    CLog::initialize();
    EXPECT_EQ(OrlixTest::countDescriptors(), iBefore);
}

TEST(CLog, ASmallLimitMeansNoFile) {
    for (const unsigned int uiLimit : {0u, 1u, 10239u, 10240u}) {
        const CFileLog file(uiLimit);
        CLog::initialize();
        log("text");
        CLog::unInitialize();
        EXPECT_FALSE(file.exists()) << uiLimit;
    }
    for (const unsigned int uiLimit : {10241u, 4294967295u}) {
        const CFileLog file(uiLimit);
        CLog::initialize();
        log("text");
        EXPECT_EQ(file.finish(), BOM + lineOf("text")) << uiLimit;
    }
}

TEST(CLog, AppendsWithoutASecondMark) {
    const CFileLog file;
    CLog::initialize();
    log("1");
    CLog::unInitialize();
    CLog::initialize();
    log("2");
    EXPECT_EQ(file.finish(), BOM + lineOf("1") + lineOf("2"));
}

TEST(CLog, AFileWithAnythingInItGetsNoMark) {
    const CFileLog file;
    writeWhole(file.getPath(), "x");
    CLog::initialize();
    EXPECT_EQ(file.finish(), "x");
}

TEST(CLog, AFileAtTheLimitIsKeptAndOneByteMoreEmptiesIt) {
    for (const unsigned int uiLimit : {10241u, LIMIT}) {
        const CFileLog file(uiLimit);
        const std::string strFull(uiLimit, 'x');
        writeWhole(file.getPath(), strFull);
        CLog::initialize();
        log("text");
        EXPECT_EQ(file.finish(), strFull + lineOf("text"));
        writeWhole(file.getPath(), strFull + "x");
        CLog::initialize();
        log("text");
        EXPECT_EQ(file.finish(), BOM + lineOf("text"));
    }
}

// The size is looked at only by initialize, on purpose: no line is lost in the middle of a run.
TEST(CLog, ARunMayOutgrowTheLimitAndTheNextOneBeginsAnew) {
    const CFileLog file(10241);
    CLog::initialize();
    std::string strExpected = BOM;
    for (int i = 0; i < 100; ++i) {
        log(std::string(100, 'x'));
        strExpected += lineOf(std::string(100, 'x'));
    }
    EXPECT_EQ(file.finish(), strExpected);
    CLog::initialize();
    EXPECT_EQ(file.finish(), BOM);
}

TEST(CLog, MakesTheFolderOfTheFile) {
    CFileLog file;
    file.setFile(LIMIT, "new/log");
    CLog::initialize();
    log("text");
    CLog::unInitialize();
    EXPECT_EQ(file.read("new/log"), BOM + lineOf("text"));
}

TEST(CLog, AFileThatCannotBeOpenedIsLeftOut) {
    CFileLog file;
    for (const char* pName : {"folder", "missing/missing/log"}) {
        file.setFile(LIMIT, pName);
        std::filesystem::create_directory(file.getPath("folder"));
        const std::ptrdiff_t iBefore = OrlixTest::countDescriptors();
        CLog::initialize();
        log("text");
        EXPECT_EQ(OrlixTest::countDescriptors(), iBefore);
        EXPECT_FALSE(file.exists("missing"));
    }
    file.setFile(LIMIT, "log"); // and a later one works
    CLog::initialize();
    log("text");
    EXPECT_EQ(file.finish(), BOM + lineOf("text"));
}

TEST(CLog, AFileThatCannotBeEmptiedIsLeftOut) {
    CFileLog file;
    const int iMemory = memfd_create("log", MFD_ALLOW_SEALING | MFD_CLOEXEC); // to append to, but not to shorten
    const std::string strFull(LIMIT + 1, 'x'), strPath = "/proc/self/fd/" + std::to_string(iMemory);
    ASSERT_EQ(::write(iMemory, strFull.data(), strFull.size()), static_cast<ssize_t>(strFull.size()));
    ASSERT_EQ(fcntl(iMemory, F_ADD_SEALS, F_SEAL_SHRINK), 0);
    const std::ptrdiff_t iBefore = OrlixTest::countDescriptors();
    file.setFile(LIMIT, strPath);
    CLog::initialize();
    EXPECT_EQ(OrlixTest::countDescriptors(), iBefore);
    log("text");
    CLog::unInitialize();
    EXPECT_EQ(readWhole(strPath), strFull);
    file.setFile(LIMIT + 1, strPath); // it is not too long now
    CLog::initialize();
    log("text");
    CLog::unInitialize();
    EXPECT_EQ(readWhole(strPath), strFull + lineOf("text"));
    close(iMemory);
}

TEST(CLog, AFileThatCannotBeOpenedEndsTheOneBefore) {
    CFileLog file;
    CLog::initialize();
    log("1");
    file.setFile(LIMIT, "missing/missing/log");
    CLog::initialize();
    EXPECT_EQ(file.read(), BOM + lineOf("1")) << "it is closed";
    log("2");
    EXPECT_EQ(file.finish(), BOM + lineOf("1"));
}

TEST(CLog, ASecondOpeningGoesOnInTheSameFile) {
    const CFileLog file;
    CLog::initialize();
    log("1");
    CLog::initialize();
    log("2");
    EXPECT_EQ(file.finish(), BOM + lineOf("1") + lineOf("2"));
}

TEST(CLog, ASecondOpeningMayTakeAnotherFile) {
    CFileLog file;
    const std::ptrdiff_t iBefore = OrlixTest::countDescriptors();
    CLog::initialize();
    log("1");
    file.setFile(LIMIT, "other");
    log("2");
    CLog::initialize();
    log("3");
    EXPECT_EQ(OrlixTest::countDescriptors(), iBefore + 1);
    EXPECT_EQ(file.finish(), BOM + lineOf("1") + lineOf("2")) << "settings alone do not move the log";
    EXPECT_EQ(file.read("other"), BOM + lineOf("3"));
}

// The settings are asked before the open file is let go, so this is no way to close it.
TEST(CLog, SettingsWithoutAFileLeaveTheOpenOneInUse) {
    CFileLog file;
    CLog::initialize();
    log("1");
    file.setFile(LIMIT, "");
    CLog::initialize();
    log("2");
    file.setFile(10240, "other");
    CLog::initialize();
    log("3");
    EXPECT_EQ(file.finish(), BOM + lineOf("1") + lineOf("2") + lineOf("3"));
    EXPECT_FALSE(file.exists("other"));
}

// ---- Closing

TEST(CLog, ClosingWritesOutAndEndsTheFile) {
    const CFileLog file;
    const std::ptrdiff_t iBefore = OrlixTest::countDescriptors();
    CLog::initialize();
    EXPECT_EQ(OrlixTest::countDescriptors(), iBefore + 1);
    log("text");
    CLog::unInitialize();
    EXPECT_EQ(OrlixTest::countDescriptors(), iBefore);
    EXPECT_EQ(file.read(), BOM + lineOf("text"));
    log("more");
    CLog::unInitialize();
    EXPECT_EQ(file.read(), BOM + lineOf("text"));
}

// Lines are not flushed one by one, on purpose: they reach the disk when the stream's buffer is full.
TEST(CLog, LinesWaitInTheStreamsBuffer) {
    const CFileLog file;
    CLog::initialize();
    log("text");
    EXPECT_EQ(file.read(), "");
    std::string strExpected = BOM + lineOf("text");
    while (file.read().empty() && strExpected.size() < 1u << 20) {
        log("text");
        strExpected += lineOf("text");
    }
    EXPECT_GE(strExpected.size(), 1024u) << "it has a buffer of some size";
    const std::string strOnDisk = file.read();
    EXPECT_EQ(strExpected.compare(0, strOnDisk.size(), strOnDisk), 0);
    EXPECT_EQ(file.finish(), strExpected);
}

// ---- The line

TEST(CLog, TheFileGetsPercentSignsUnchanged) {
    const CFileLog file;
    CLog::initialize();
    log("% %% %s %%s %d %n 100%");
    EXPECT_EQ(file.finish(), BOM + lineOf("% %% %s %%s %d %n 100%"));
}

TEST(CLog, NullIsEmptyInTheFile) {
    const CFileLog file;
    CLog::initialize();
    CLog::writeLog(nullptr, nullptr, nullptr);
    CLog::info(L"S", nullptr);
    EXPECT_EQ(file.finish(), BOM + utf16("[][] \r\n[Info][S] \r\n"));
}

constexpr std::size_t FRAME = 9; // "[L][S] " and CR LF

TEST(CLog, LinesOfAllLengthsAreWhole) {
    const CFileLog file(4294967295u);
    CLog::initialize();
    std::string strExpected = BOM;
    std::mt19937 random(1);
    for (const std::size_t uiLine : {9, 10, 511, 512, 513, 514, 1023, 1024, 1025, 2047, 2049, 4096, 100000, 524287}) {
        std::string strText(uiLine - FRAME, '\0');
        for (char& ch : strText)
            ch = static_cast<char>('!' + random() % 90);
        log(strText);
        strExpected += lineOf(strText);
    }
    log(std::string(524288 - FRAME, 'x')); // too long to format: nothing
    log("end");
    EXPECT_EQ(file.finish(), strExpected + lineOf("end"));
}

#if !defined(ORLIX_TEST_ASAN) && !defined(ORLIX_TEST_TSAN)
TEST(CLog, LinesOfUpTo512CharactersNeedNoHeap) {
    const CFileLog file;
    CLog::initialize();
    log("first"); // gives the stream its buffer
    const std::wstring str512(512 - FRAME, L'a'), str513(513 - FRAME, L'b');
    EXPECT_EQ(runInChild([&] {
                  if (!OrlixTest::limitMemory(1 << 20))
                      return 1;
                  OrlixTest::useUpMemory();
                  CLog::writeLog(L"L", L"S", str512.c_str());
                  CLog::writeLog(L"L", L"S", str513.c_str());
                  CLog::writeLog(L"L", L"S", L"end");
                  CLog::unInitialize();
                  return 0;
              }).iExitCode,
              0);
    EXPECT_EQ(file.read(), BOM + lineOf("first") + lineOf(std::string(512 - FRAME, 'a')) + lineOf("end"));
}
#endif

// ---- The host's sink

class CCountingSink : public ILogOuter {
public:
    void writeLog(const CString& strLevel, const CString& strSource, const CString& strText) override {
        ++iCalls;
        level = strLevel;
        source = strSource;
        text = strText;
    }
    int iCalls = 0;
    CString level, source, text;
};

TEST(CLog, TheHostsSinkGetsTheParts) {
    const CLogSettings settings;
    CCountingSink sink;
    CLog::setLogOuter(&sink);
    CLogBuild::warning2(L"100%% %s");
    EXPECT_EQ(sink.iCalls, 1);
    EXPECT_STREQ(sink.level.getBuffer(), L"Warning");
    EXPECT_STREQ(sink.source.getBuffer(), L"OrlixBuild");
    EXPECT_STREQ(sink.text.getBuffer(), L"100%% %s");
    CLogBuild::debug2(L"off");
    EXPECT_EQ(sink.iCalls, 1);
    CLog::writeLog(nullptr, nullptr, nullptr);
    EXPECT_EQ(sink.iCalls, 2);
    EXPECT_TRUE(sink.level.isEmpty() && sink.source.isEmpty() && sink.text.isEmpty()) << "null strings";
    CLog::writeLog(L"", L"", L"");
    EXPECT_FALSE(sink.level.isEmpty() || sink.source.isEmpty() || sink.text.isEmpty()) << "blank strings";
    EXPECT_EQ(sink.text.length(), 0u);
}

TEST(CLog, TheHostsSinkCanBeReplacedAndTakenAway) {
    const CLogSettings settings;
    CCountingSink first, second;
    CLog::setLogOuter(&first);
    CLog::info(L"S", L"1");
    CLog::setLogOuter(&second);
    CLog::info(L"S", L"2");
    CLog::setLogOuter(nullptr);
    CLog::info(L"S", L"3");
    EXPECT_STREQ(first.text.getBuffer(), L"1");
    EXPECT_STREQ(second.text.getBuffer(), L"2");
    EXPECT_EQ(first.iCalls + second.iCalls, 2);
}

TEST(CLog, ALineTooLongForTheFileReachesTheHostsSink) {
    const CLogSettings settings;
    CCountingSink sink;
    CLog::setLogOuter(&sink);
    CLog::writeLog(L"L", L"S", std::wstring(524288, L'x').c_str());
    EXPECT_EQ(sink.text.length(), 524288u);
}

/** Logs while it is called, on a thread of its own, and waits for that. */
class CLoggingSink : public ILogOuter {
public:
    void writeLog(const CString&, const CString&, const CString& strText) override {
        if (strText == L"outer")
            std::thread([] { log("inner"); }).join();
    }
};

TEST(CLog, TheHostsSinkIsCalledWithoutTheLockAndLast) {
    const CFileLog file;
    CLoggingSink sink;
    CLog::initialize();
    CLog::setLogOuter(&sink);
    log("outer");
    EXPECT_EQ(file.finish(), BOM + lineOf("outer") + lineOf("inner"));
}

TEST(CLog, ARecorderSeesWholeLines) {
    const CLogRecorder recorder;
    CLogEngine::error2(L"text");
    CLogEngine::info(nullptr);
    EXPECT_EQ(recorder.getLines(), (std::vector<std::wstring>{L"[Error][OrlixEngine] text", L"[Info][OrlixEngine] "}));
}

// ---- Several threads and processes

class CCallCounter : public ILogOuter {
public:
    void writeLog(const CString&, const CString&, const CString&) override { ++iCalls; }
    std::atomic<int> iCalls{0};
};

constexpr unsigned int THREADS = 8;

std::string textOf(char chFirst, unsigned int uiThread, unsigned int uiLine) {
    const std::string strNumber = std::to_string(uiLine);
    std::string strText(1, static_cast<char>(chFirst + uiThread));
    for (const char ch : strNumber)
        strText += static_cast<char>(chFirst + 10 + ch - '0');
    // Now and then a line that needs the heap, or more than the stream's buffer.
    const std::size_t uiFill = uiLine % 500 == 7 ? 5000 : uiLine % 50 == 3 ? 600 : uiLine % 40;
    return strText + std::string(uiFill, static_cast<char>(chFirst + 20));
}

/** Each of eight threads logs uiLines lines, all of characters from chFirst on. */
void logOnThreads(char chFirst, unsigned int uiLines) {
    std::thread aryThread[THREADS];
    for (unsigned int uiThread = 0; uiThread < THREADS; ++uiThread)
        aryThread[uiThread] = std::thread([=] {
            for (unsigned int i = 0; i < uiLines; ++i)
                log(textOf(chFirst, uiThread, i));
        });
    for (std::thread& thread : aryThread)
        thread.join();
}

/** Takes one line after the other off the text: each has to be the next one of its thread.
 *  @param strBefore, strBehind what stands around each. @return empty if all is well. */
std::string checkLines(const std::string& strText, const std::string& strBefore, const std::string& strBehind,
                       char chFirst, unsigned int uiLines) {
    std::array<unsigned int, THREADS> aryNext{};
    std::size_t uiAt = 0;
    while (uiAt < strText.size()) {
        const unsigned int uiThread = static_cast<unsigned int>(strText[uiAt + strBefore.size()] - chFirst);
        if (uiThread >= THREADS)
            return "torn at " + std::to_string(uiAt);
        const std::string strLine = strBefore + textOf(chFirst, uiThread, aryNext[uiThread]++) + strBehind;
        if (strText.compare(uiAt, strLine.size(), strLine) != 0)
            return "torn or out of order at " + std::to_string(uiAt);
        uiAt += strLine.size();
    }
    for (const unsigned int uiNext : aryNext)
        if (uiNext != uiLines)
            return "lost";
    return "";
}

/** The characters of a file behind its mark; '?' for those that are not ASCII. */
std::string narrow(const std::string& strBytes) {
    std::string strText;
    for (std::size_t i = BOM.size(); i + 1 < strBytes.size(); i += 2)
        strText += strBytes[i + 1] == '\0' ? strBytes[i] : '?';
    return strText;
}

TEST(CLog, LinesOfEightThreadsAreWholeInTheFile) {
    constexpr unsigned int LINES = 2000;
    const CFileLog file;
    CLog::initialize();
    logOnThreads('A', LINES);
    EXPECT_EQ(checkLines(narrow(file.finish()), "[L][S] ", "\r\n", 'A', LINES), "");
}

// Each process appends what its stream's buffer holds, so their lines mix; but nothing is lost or written over, and
// what one of them wrote is in the order that it was written in.
TEST(CLog, TwoProcessesOfEightThreadsLoseNothing) {
    constexpr unsigned int LINES = 1000;
    const CFileLog file(4294967295u);
    CLog::initialize(); // makes the mark, which two at once would both make
    CLog::unInitialize();
    EXPECT_EQ(runInChild([] {
                  const pid_t pid = OrlixTest::forkBound();
                  CLog::initialize();
                  logOnThreads(pid == 0 ? '0' : 'a', LINES);
                  CLog::unInitialize();
                  int iStatus = 0;
                  if (pid == 0)
                      _exit(0);
                  return pid > 0 && waitpid(pid, &iStatus, 0) == pid ? iStatus : 1;
              }).iExitCode,
              0);
    std::string strChild, strParent, strFrames; // the two use different characters, and the frames others again
    for (const char ch : narrow(file.read()))
        (ch >= 'a' && ch <= 'u' ? strParent : ch >= '0' && ch <= 'D' ? strChild : strFrames) += ch;
    EXPECT_EQ(checkLines(strChild, "", "", '0', LINES), "");
    EXPECT_EQ(checkLines(strParent, "", "", 'a', LINES), "");
    EXPECT_EQ(strFrames.size(), 2 * THREADS * LINES * FRAME);
    for (const char ch : {'L', 'S', ' ', '\r', '\n'})
        EXPECT_EQ(static_cast<std::size_t>(std::count(strFrames.begin(), strFrames.end(), ch)), 2 * THREADS * LINES);
}

TEST(CLog, TheFileMayBeClosedAndTheSinkChangedWhileThreadsLog) {
    const CFileLog file(4294967295u);
    CCallCounter sink;
    CLog::initialize();
    std::atomic<bool> bStop{false};
    std::atomic<unsigned int> uiStarted{0};
    std::thread aryThread[THREADS];
    for (std::thread& thread : aryThread)
        thread = std::thread([&] {
            log("text");
            for (++uiStarted; !bStop;)
                log("text");
        });
    while (uiStarted < THREADS)
        std::this_thread::yield();
    CLog::setLogOuter(&sink);
    while (sink.iCalls == 0)
        std::this_thread::yield();
    CLog::unInitialize();
    CLog::setLogOuter(nullptr);
    bStop = true;
    for (std::thread& thread : aryThread)
        thread.join();
    const std::string strBytes = file.read();
    const std::size_t uiLine = lineOf("text").size();
    ASSERT_GE(strBytes.size(), BOM.size() + THREADS * uiLine);
    ASSERT_EQ(strBytes.size() % uiLine, BOM.size());
    for (std::size_t i = BOM.size(); i < strBytes.size(); i += uiLine)
        ASSERT_EQ(strBytes.compare(i, uiLine, lineOf("text")), 0) << i;
}

// ---- A disk that is full

TEST(CLog, AFullDiskLosesLinesAndNothingElse) {
    constexpr unsigned int FULL_AT = 20000;
    const CFileLog file;
    std::string strExpected = BOM;
    for (int i = 0; i < 1000; ++i)
        strExpected += lineOf(std::to_string(i));
    EXPECT_EQ(runInChild([] {
                  const rlimit limit{FULL_AT, FULL_AT};
                  std::signal(SIGXFSZ, SIG_IGN);
                  if (setrlimit(RLIMIT_FSIZE, &limit) != 0)
                      return 1;
                  CCallCounter sink;
                  CLog::setLogOuter(&sink);
                  CLog::initialize();
                  for (int i = 0; i < 1000; ++i)
                      log(std::to_string(i));
                  CLog::unInitialize();
                  return sink.iCalls == 1000 ? 0 : 2;
              }).iExitCode,
              0);
    const std::string strBytes = file.read();
    EXPECT_LE(strBytes.size(), FULL_AT);
    EXPECT_GT(strBytes.size(), FULL_AT / 2);
    EXPECT_EQ(strExpected.compare(0, strBytes.size(), strBytes), 0) << "what fits is right";
}

TEST(CLog, AFileThatTakesNothingIsLeftAlone) {
    CFileLog file;
    CCountingSink sink;
    file.setFile(LIMIT, "/dev/full");
    const std::ptrdiff_t iBefore = OrlixTest::countDescriptors();
    CLog::initialize();
    CLog::setLogOuter(&sink);
    for (int i = 0; i < 1000; ++i)
        log("text");
    CLog::unInitialize();
    EXPECT_EQ(sink.iCalls, 1000);
    EXPECT_EQ(OrlixTest::countDescriptors(), iBefore);
}
} // namespace
