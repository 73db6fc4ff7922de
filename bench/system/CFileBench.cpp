// Writing and reading a file of 100 MB in blocks of 64 bytes, 4 KiB and 64 KiB, and opening and closing a small one.
//
// The peer is the C library's stream that CFile holds, so what is seen is what the class itself costs. The file lies in
// the memory of the page cache. Left out: the disk, whose pace is the same for both, so nothing is forced out to it.
#include <Orlix/system/CFile.h>

#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

using Orlix::CFile;
using Orlix::CString;

namespace {

constexpr std::size_t FILE_BYTES = 100000000;
constexpr std::size_t SMALL_BYTES = 100;

/** A file of the benchmark's own, gone with the program. */
class CTempFile {
public:
    explicit CTempFile(std::size_t uiBytes)
        : m_strPath(std::filesystem::temp_directory_path().string() + "/orlix-bench-XXXXXX") {
        const int iHandle = mkstemp(m_strPath.data());
        if (iHandle < 0 || ftruncate(iHandle, 0) != 0)
            std::exit(1);
        close(iHandle);
        std::FILE* const pFile = std::fopen(m_strPath.c_str(), "wb");
        const std::vector<unsigned char> aryBytes(uiBytes, 0x5A);
        if (!pFile || std::fwrite(aryBytes.data(), 1, uiBytes, pFile) != uiBytes || std::fclose(pFile) != 0)
            std::exit(1);
        m_strText = std::wstring(m_strPath.begin(), m_strPath.end()).c_str();
    }
    CTempFile(const CTempFile&) = delete;
    CTempFile& operator=(const CTempFile&) = delete;
    ~CTempFile() { unlink(m_strPath.c_str()); }

    const char* getPath() const { return m_strPath.c_str(); }
    const CString& getText() const { return m_strText; }

private:
    std::string m_strPath;
    CString m_strText;
};

struct OrlixFile {
    CFile file;
    bool openToRead(const CTempFile& temp) { return file.open(temp.getText(), true); }
    bool openToWrite(const CTempFile& temp) { return file.open(temp.getText(), L"r+b"); }
    bool read(unsigned char* pBlock, unsigned int uiBytes) { return file.readData(pBlock, uiBytes); }
    bool write(const unsigned char* pBlock, unsigned int uiBytes) { return file.writeData(pBlock, uiBytes); }
    void close() { file.close(); }
};

struct Stdio {
    std::FILE* pFile = nullptr;
    bool openToRead(const CTempFile& temp) { return (pFile = std::fopen(temp.getPath(), "rb")) != nullptr; }
    bool openToWrite(const CTempFile& temp) { return (pFile = std::fopen(temp.getPath(), "r+b")) != nullptr; }
    bool read(unsigned char* pBlock, unsigned int uiBytes) { return std::fread(pBlock, 1, uiBytes, pFile) == uiBytes; }
    bool write(const unsigned char* pBlock, unsigned int uiBytes) {
        return std::fwrite(pBlock, 1, uiBytes, pFile) == uiBytes;
    }
    void close() { std::fclose(pFile); }
};

/** Both work on the one file, whose pages stay where they are: a file that is made anew pays for its pages. */
const CTempFile& largeFile() {
    static const CTempFile s_temp(FILE_BYTES);
    return s_temp;
}

const CTempFile& smallFile() {
    static const CTempFile s_temp(SMALL_BYTES);
    return s_temp;
}

template <class TStream> void readBlocks(benchmark::State& state) {
    std::vector<unsigned char> aryBlock(static_cast<std::size_t>(state.range(0)));
    const unsigned int uiBlock = static_cast<unsigned int>(aryBlock.size());
    const CTempFile& temp = largeFile();
    for (auto _ : state) {
        TStream stream;
        bool bGood = stream.openToRead(temp);
        for (std::size_t uiLeft = FILE_BYTES / uiBlock; uiLeft != 0; --uiLeft) {
            bGood &= stream.read(aryBlock.data(), uiBlock);
            benchmark::DoNotOptimize(aryBlock.data());
        }
        stream.close();
        if (!bGood) {
            state.SkipWithError("cannot read");
            break;
        }
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(FILE_BYTES));
}

template <class TStream> void writeBlocks(benchmark::State& state) {
    const std::vector<unsigned char> aryBlock(static_cast<std::size_t>(state.range(0)), 0x5A);
    const unsigned int uiBlock = static_cast<unsigned int>(aryBlock.size());
    const CTempFile& temp = largeFile();
    for (auto _ : state) {
        TStream stream;
        bool bGood = stream.openToWrite(temp);
        for (std::size_t uiLeft = FILE_BYTES / uiBlock; uiLeft != 0; --uiLeft)
            bGood &= stream.write(aryBlock.data(), uiBlock);
        stream.close();
        if (!bGood) {
            state.SkipWithError("cannot write");
            break;
        }
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(FILE_BYTES));
}

/** What the conversion of the path, which sets the locale, adds to a small file. */
template <class TStream> void readSmall(benchmark::State& state) {
    unsigned char aryBlock[SMALL_BYTES];
    const CTempFile& temp = smallFile();
    for (auto _ : state) {
        TStream stream;
        if (!stream.openToRead(temp) || !stream.read(aryBlock, SMALL_BYTES)) {
            state.SkipWithError("cannot read");
            break;
        }
        benchmark::DoNotOptimize(aryBlock);
        stream.close();
    }
}

template <class TStream> void registerStream(const std::string& strName) {
    for (const int iBytes : {64, 4096, 65536}) {
        benchmark::RegisterBenchmark((strName + "_read").c_str(), readBlocks<TStream>)
            ->Arg(iBytes)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark((strName + "_write").c_str(), writeBlocks<TStream>)
            ->Arg(iBytes)
            ->Unit(benchmark::kMillisecond);
    }
    benchmark::RegisterBenchmark((strName + "_openReadClose").c_str(), readSmall<TStream>)->Arg(SMALL_BYTES);
}

const bool g_bRegistered = [] {
    registerStream<OrlixFile>("CFile");
    registerStream<Stdio>("Stdio");
    return true;
}();
} // namespace
