#pragma once

#include <Orlix/foundation/CString.h>

/** Prints every setting in force as section.attribute=value, one a line, in the order of the configuration file. */
class CConfigPrinter {
public:
    void print();

    void operator()(const wchar_t* pName, bool bValue) const;
    void operator()(const wchar_t* pName, int iValue) const;
    void operator()(const wchar_t* pName, unsigned int uiValue) const;
    /** Line breaks come out as the entities that stand for them in the file, so that a value never ends its line. */
    void operator()(const wchar_t* pName, const Orlix::CString& strValue) const;

private:
    Orlix::CString m_strPrefix; // what stands before the attribute's name: the section and a dot

    template <class TRecord> void printSection(const wchar_t* pSection, const TRecord& record);
    void printThreads();
    void printSurfaces();
};
