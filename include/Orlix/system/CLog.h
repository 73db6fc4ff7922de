#pragma once

#include <Orlix/foundation/CObjectPtr.h>
#include <Orlix/foundation/CString.h>
#include <Orlix/foundation/CSyncObject.h>
#include <Orlix/system/CFile.h>

#include <atomic>

namespace Orlix {

class ILogOuter;

/** The log of the process: four levels, and three sinks, which are the terminal, a file and the host's own.
 *
 *  A line is "[level][source] text" and ends in CR LF on the terminal and in the file, which is UTF-16 with a byte
 *  order mark. Which levels are on and where lines go is asked of CConfigParser at each call; with no settings loaded
 *  all levels but debug go to the terminal. The levels are switches, each for itself, and not a threshold. Nothing
 *  here reports a failure: a line that cannot be written is lost, and so is one of more than 524,287 characters,
 *  except to the host's sink.
 *
 *  On the terminal a percent sign in a logged text is read as one in a format: "%%" prints one of them, and "%%s"
 *  prints "%ls". Anything else behind one stays as it is, for there is nothing to be put in its place. The file and the
 *  host's sink get the text unchanged.
 *
 *  Threads: any may log. In the file lines stay whole; on the terminal, and in the host's sink, those of several
 *  threads may mix. Two processes may append to one file; no line is lost then, but their lines may mix. */
class ORLIX_API CLog {
public:
    /** Opens the log file of the settings and empties it if it has outgrown its limit. For the host, after it loaded
     *  the settings and before other threads log. Does nothing without a path, or with a limit of 10240 bytes or
     *  less: a file that an earlier call opened stays in use then. If the file cannot be opened there is none. */
    static void initialize();
    /** Closes the log file, once no thread is writing to it. Lines go on to the other sinks. */
    static void unInitialize();
    /** @param pLogOuter not owned, must live until it is replaced and no thread is inside it; null for none. */
    static void setLogOuter(ILogOuter* pLogOuter);

    // The 2 has no meaning of its own: there is no form without it. A null source or text counts as an empty one.

    static void info(const wchar_t* pSource, const wchar_t* pText);
    static void info(const CString& strSource, const CString& strText);
    static void warning2(const wchar_t* pSource, const wchar_t* pText);
    static void warning2(const CString& strSource, const CString& strText);
    static void error2(const wchar_t* pSource, const wchar_t* pText);
    static void error2(const CString& strSource, const CString& strText);
    static void debug2(const wchar_t* pSource, const wchar_t* pText);
    static void debug2(const CString& strSource, const CString& strText);

    /** Writes a line to all sinks, whatever levels are on. @param pLevel the word in the first brackets. */
    static void writeLog(const wchar_t* pLevel, const wchar_t* pSource, const wchar_t* pText);

private:
    static CObjectPtr<CFile> s_ptrFile; // open, or null; guarded by s_syncObject once other threads log
    static CSyncObject s_syncObject;
    static ILogOuter* s_pLogOuter;       // not owned; no lock
    static std::atomic<bool> s_bHasFile; // s_ptrFile is set, for a first look without the lock

    static bool openFile(const CString& strPath, unsigned int uiLimit);
    static void setFile(CFile* pFile);
};
} // namespace Orlix
