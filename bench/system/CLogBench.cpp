// A log line to a file, by length, and a line of a level that is off.
//
// All write to the memory of the page cache, none flushes after a line, and the line is the same: level, source, text
// and CR LF. Ours and the C library's stream hold wide text, and the library's file is UTF-16, two bytes a character,
// where the peers write one: that is the contract of the file. The floor is a recursive lock, the text widened or
// narrowed into a local buffer, and one write to a stream.
// Left out: the disk, whose pace is the same for all, and lines to the terminal, which cost what the terminal costs.
#include <Orlix/formats/CConfigParser.h>
#include <Orlix/system/CLogUtility.h>

#include <benchmark/benchmark.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include <pthread.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <filesystem>
#include <string>

using namespace Orlix;

namespace {

/** A folder of the benchmark's own, gone with the program. */
class CTempFolder {
public:
    CTempFolder() : m_strPath(std::filesystem::temp_directory_path().string() + "/orlix-bench-XXXXXX") {
        if (!mkdtemp(m_strPath.data()))
            std::exit(1);
    }
    CTempFolder(const CTempFolder&) = delete;
    CTempFolder& operator=(const CTempFolder&) = delete;
    ~CTempFolder() {
        std::error_code error;
        std::filesystem::remove_all(m_strPath, error);
    }
    std::string operator/(const char* pName) const { return m_strPath + "/" + pName; }

private:
    std::string m_strPath;
};

const CTempFolder& folder() {
    static const CTempFolder s_folder;
    return s_folder;
}

std::FILE* openFile(const char* pName) {
    std::FILE* const pFile = std::fopen((folder() / pName).c_str(), "wb");
    if (!pFile)
        std::exit(1);
    return pFile;
}

std::string textOf(benchmark::State& state) { return std::string(static_cast<std::size_t>(state.range(0)), 'x'); }

std::wstring wideTextOf(benchmark::State& state) {
    return std::wstring(static_cast<std::size_t>(state.range(0)), L'x');
}

class OrlixLog {
public:
    OrlixLog() {
        const std::string strPath = folder() / "engine.xml";
        std::FILE* const pFile = openFile("engine.xml");
        std::fputs(
            "<engine><log_output terminal=\"false\" file_size=\"10241\" file_path_linux=\"orlix.log\"/></engine>",
            pFile);
        std::fclose(pFile);
        CConfigParser::getInstance()->load(std::wstring(strPath.begin(), strPath.end()).c_str());
        CLog::initialize();
    }
    ~OrlixLog() {
        CLog::unInitialize();
        CConfigParser::deleteInstance();
    }
    typedef std::wstring TText;
    void info(const std::wstring& strText) { CLogEngine::info(strText.c_str()); }
    void debug(const std::wstring& strText) { CLogEngine::debug2(strText.c_str()); }
};

class Spdlog {
public:
    Spdlog() : m_pLogger(spdlog::basic_logger_mt("OrlixEngine", folder() / "spdlog.log", true)) {
        m_pLogger->set_pattern("[%l][%n] %v\r");
    }
    ~Spdlog() { spdlog::drop("OrlixEngine"); }
    typedef std::string TText;
    void info(const std::string& strText) { m_pLogger->info(strText); }
    void debug(const std::string& strText) { m_pLogger->debug(strText); }

private:
    std::shared_ptr<spdlog::logger> m_pLogger;
};

class Fwprintf {
public:
    Fwprintf() : m_pFile(openFile("fwprintf.log")) {}
    ~Fwprintf() { std::fclose(m_pFile); }
    typedef std::wstring TText;
    void info(const std::wstring& strText) {
        std::fwprintf(m_pFile, L"[%ls][%ls] %ls\r\n", L"Info", L"OrlixEngine", strText.c_str());
    }

private:
    std::FILE* m_pFile;
};

class Floor {
public:
    Floor() : m_pFile(openFile("floor.log")) {}
    ~Floor() { std::fclose(m_pFile); }
    typedef std::wstring TText;
    void info(const std::wstring& strText) {
        static constexpr wchar_t FRAME[] = L"[Info][OrlixEngine] \r\n";
        char16_t aryLine[2048];
        char16_t* pWrite = aryLine;
        for (const wchar_t* pRead = FRAME; *pRead != L'\0'; ++pRead)
            *pWrite++ = static_cast<char16_t>(*pRead);
        const std::size_t uiLength = std::wcslen(strText.c_str());
        for (std::size_t i = 0; i < uiLength; ++i)
            *pWrite++ = static_cast<char16_t>(strText[i]);
        pthread_mutex_lock(&m_mutex);
        std::fwrite(aryLine, 1, static_cast<std::size_t>(pWrite - aryLine) * 2, m_pFile);
        pthread_mutex_unlock(&m_mutex);
    }

private:
    std::FILE* m_pFile;
    pthread_mutex_t m_mutex = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;
};

template <class TLog> void writeLines(benchmark::State& state, typename TLog::TText (*makeText)(benchmark::State&)) {
    TLog log;
    const typename TLog::TText strText = makeText(state);
    for (auto _ : state)
        log.info(strText);
}

template <class TLog> void skipLines(benchmark::State& state, typename TLog::TText (*makeText)(benchmark::State&)) {
    TLog log;
    const typename TLog::TText strText = makeText(state);
    for (auto _ : state)
        log.debug(strText);
}

// Each run starts with an empty file, and a fixed number of lines keeps it from filling the disk.
constexpr int LINES = 200000;

const bool g_bRegistered = [] {
    for (const int iLength : {10, 60, 400}) {
        const auto sized = [=](benchmark::internal::Benchmark* pBench) { pBench->Arg(iLength)->Iterations(LINES); };
        sized(benchmark::RegisterBenchmark("CLog_line", writeLines<OrlixLog>, wideTextOf));
        sized(benchmark::RegisterBenchmark("Floor_line", writeLines<Floor>, wideTextOf));
        sized(benchmark::RegisterBenchmark("Spdlog_line", writeLines<Spdlog>, textOf));
        sized(benchmark::RegisterBenchmark("Fwprintf_line", writeLines<Fwprintf>, wideTextOf));
    }
    benchmark::RegisterBenchmark("CLog_levelOff", skipLines<OrlixLog>, wideTextOf)->Arg(60);
    benchmark::RegisterBenchmark("Spdlog_levelOff", skipLines<Spdlog>, textOf)->Arg(60);
    return true;
}();
} // namespace
