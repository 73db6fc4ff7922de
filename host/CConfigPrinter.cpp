#include "CConfigPrinter.h"

#include "TextOf.h"

#include <Orlix/formats/CConfigParser.h>
#include <Orlix/foundation/CStringConverter.h>

#include <cwchar>

using namespace Orlix;

void CConfigPrinter::print() {
    const CConfigParser& config = *CConfigParser::getInstance();
    (*this)(L"use_for_studio", config.isUsedForStudio());
    (*this)(L"merge_window", config.isMergeWindow());
    printSection(L"log_level.", config.getLogLevel());
    printSection(L"log_output.", config.getLogOutput());
    m_strPrefix = L"mem_report_output.";
    (*this)(L"file_path_linux", config.getMemReportOutput());
    printThreads();
    printSurfaces();
    printSection(L"resource_cache.", config.getResourceCache());
    printSection(L"render_cache.", config.getRenderCache());
    printSection(L"render_param.", config.getRenderParam());
    printSection(L"render_geometry.", config.getRenderGeometry());
    printSection(L"render_text.", config.getRenderText());
    printSection(L"touch_param.", config.getTouchParam());
    printSection(L"gesture_param.", config.getGestureParam());
    printSection(L"animation_param.", config.getAnimationParam());
}

template <class TRecord> void CConfigPrinter::printSection(const wchar_t* pSection, const TRecord& record) {
    m_strPrefix = pSection;
    TRecord::visit(record, *this);
}

void CConfigPrinter::printThreads() {
    const CConfigParser::tagThread& thread = CConfigParser::getInstance()->getThread();
    for (unsigned int i = 0; i < CConfigParser::THREAD_COUNT; ++i) {
        m_strPrefix =
            CStringConverter::format(L"thread_set.%s.", CConfigParser::getThreadID(CConfigParser::EThread(i)));
        (*this)(L"name", thread.name[i]);
        (*this)(L"priority", thread.priority[i]);
    }
}

void CConfigPrinter::printSurfaces() {
    const CConfigParser& config = *CConfigParser::getInstance();
    for (unsigned int i = 0; i < config.getSurfaceCount(); ++i)
        printSection(textOf(CStringConverter::format(L"surface_set.%u.", i)), *config.getSurfaceByIndex(i));
}

void CConfigPrinter::operator()(const wchar_t* pName, bool bValue) const { (*this)(pName, CString(bValue)); }

void CConfigPrinter::operator()(const wchar_t* pName, int iValue) const { (*this)(pName, CString(iValue)); }

void CConfigPrinter::operator()(const wchar_t* pName, unsigned int uiValue) const {
    const bool bColor = std::wcscmp(pName, L"initial_color") == 0;
    (*this)(pName, CStringConverter::format(bColor ? L"0x%08X" : L"%u", uiValue));
}

void CConfigPrinter::operator()(const wchar_t* pName, const CString& strValue) const {
    CString strLine = strValue;
    strLine.replaceAll(L"\r", L"&cr;");
    strLine.replaceAll(L"\n", L"&lf;");
    CStringConverter::printf(L"%s%s=%s\n", textOf(m_strPrefix), pName, textOf(strLine));
}
