#pragma once

#include <cstddef>
#include <string>

class CEventFlag;

/** Reads a file, a pipe or standard input line by line, each line as soon as it is there.
 *
 *  Threads: open on one thread, then readLine on one, which may be another. */
class CLineReader {
public:
    /** A longer line is an error: an input without line ends must not take all memory. */
    static constexpr std::size_t LINE_BYTES_MOST = 64u << 20;

    /** @param stop once set, the input counts as ended. Outlives this. */
    explicit CLineReader(const CEventFlag& stop) noexcept : m_stop(stop) {}
    CLineReader(const CLineReader&) = delete;
    CLineReader& operator=(const CLineReader&) = delete;
    ~CLineReader();

    /** @param pPath the file; "-" for standard input. @return false with the reason in errno if it cannot be read. */
    bool open(const char* pPath);

    /** Takes the next line, without its end; the last one may have none. @return false at the end of the input and when
     *  it cannot be read any further. */
    bool readLine(std::string& strLine);

    /** Why the input could not be read to its end, as an errno; 0 if it was. */
    int getError() const noexcept { return m_iError; }

private:
    bool fill();

    const CEventFlag& m_stop;
    int m_iFile = -1;
    int m_iError = 0;
    char m_aryChunk[65536];
    std::size_t m_uiStart = 0; // what of the chunk has not been taken yet
    std::size_t m_uiEnd = 0;
};
