#pragma once

/** The command line of orlix-host, checked. Texts point into the arguments. */
class CHostOptions {
public:
    /** Reads the arguments. A mistake is one line on stderr. @return false after a mistake. */
    bool parse(int iCount, char** ppArgument);

    /** The file that is played line by line, "-" for standard input; null for none. */
    const char* getTextPath() const noexcept { return m_pTextPath; }
    /** The configuration file; null for the built-in defaults. */
    const char* getConfigPath() const noexcept { return m_pConfigPath; }
    /** Whether to print the settings instead of running. */
    bool isPrintConfig() const noexcept { return m_bPrintConfig; }

private:
    const char* m_pTextPath = nullptr;
    const char* m_pConfigPath = nullptr;
    bool m_bPrintConfig = false;

    const char** findValueOption(const char* pOption) noexcept;
    bool check() const;
};
