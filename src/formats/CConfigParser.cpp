#include <Orlix/formats/CConfigParser.h>

#include <Orlix/formats/CXMLElement.h>
#include <Orlix/foundation/CSet.h>
#include <Orlix/foundation/CStringConverter.h>
#include <Orlix/system/CPath.h>

namespace Orlix {
namespace {

constexpr const wchar_t* THREAD_ID[] = {L"mq", L"tm", L"sc", L"gr", L"ap", L"sm", L"dt", L"hc", L"wb", L"rp", L"rs"};
static_assert(sizeof(THREAD_ID) / sizeof(*THREAD_ID) == CConfigParser::THREAD_COUNT, "one id a slot");

/** Reads each field that it visits from the attribute of its name; a field without one keeps its value. */
class CAttributeReader {
public:
    explicit CAttributeReader(const CXMLElement& xmlElement) : m_xmlElement(xmlElement) {}

    void operator()(const wchar_t* pName, bool& bField) const { bField = m_xmlElement.getAttributeBool(pName, bField); }
    void operator()(const wchar_t* pName, int& iField) const { iField = m_xmlElement.getAttributeInt(pName, iField); }
    void operator()(const wchar_t* pName, unsigned int& uiField) const {
        uiField = m_xmlElement.getAttributeUInt(pName, uiField);
    }
    void operator()(const wchar_t* pName, CString& strField) const {
        strField = m_xmlElement.getAttributeString(pName, strField);
    }

private:
    const CXMLElement& m_xmlElement;
};

/** Attributes that the section does not name fall back to the defaults; without the section all stay as they are. */
template <class TRecord> void readSection(const CXMLElement& xmlRoot, const wchar_t* pName, TRecord& record) {
    const CXMLElement* const pSection = xmlRoot.getSingleChild(pName);
    if (!pSection)
        return;
    record = TRecord();
    TRecord::visit(record, CAttributeReader(*pSection));
}

bool isOnLayer(const CConfigParser::tagSurface& surface, int iDisplay, int iLayer) {
    return surface.display_id == iDisplay && surface.layer_id == iLayer;
}

/** Counts the surfaces in use that match. */
template <class TMatch>
unsigned int countUsed(const CObjectArray<CConfigParser::tagSurface>& arySurfaces, const TMatch& match) {
    unsigned int uiCount = 0;
    for (unsigned int i = 0; i < arySurfaces.getSize(); ++i)
        uiCount += arySurfaces[i]->use && match(*arySurfaces[i]);
    return uiCount;
}
} // namespace

CConfigParser* CConfigParser::s_pInstance = nullptr;

CConfigParser::CConfigParser() : m_bUsedForStudio(false), m_bMergeWindow(false), m_bDirty(false) {}

CConfigParser::~CConfigParser() = default;

CConfigParser* CConfigParser::getInstance() {
    if (!s_pInstance)
        s_pInstance = new CConfigParser;
    return s_pInstance;
}

void CConfigParser::deleteInstance() {
    delete s_pInstance;
    s_pInstance = nullptr;
}

const wchar_t* CConfigParser::getThreadID(EThread eThread) noexcept { return THREAD_ID[eThread]; }

bool CConfigParser::load(const CString& strPath) {
    if (!m_xmlDocument.parseFromFile(strPath)) {
        m_xmlDocument.empty();
        return false;
    }
    m_strFilePath = strPath;
    m_strFolder = CPath::getFileFolderNoLastSeparator(strPath);
    readSections(*m_xmlDocument.getRootElement());
    if (!m_bUsedForStudio)
        m_xmlDocument.empty();
    return true;
}

void CConfigParser::readSections(const CXMLElement& xmlRoot) {
    m_bUsedForStudio = xmlRoot.getAttributeBool(L"use_for_studio", false);
    m_bMergeWindow = xmlRoot.getAttributeBool(L"merge_window", false);
    readSection(xmlRoot, L"log_level", m_tagLogLevel);
    readLogOutput(xmlRoot);
    readMemReportOutput(xmlRoot);
    readThreads(xmlRoot);
    readSurfaces(xmlRoot);
    readSection(xmlRoot, L"resource_cache", m_tagResourceCache);
    readSection(xmlRoot, L"render_cache", m_tagRenderCache);
    readSection(xmlRoot, L"render_param", m_tagRenderParam);
    readSection(xmlRoot, L"render_geometry", m_tagRenderGeometry);
    readSection(xmlRoot, L"render_text", m_tagRenderText);
    readSection(xmlRoot, L"touch_param", m_tagTouchParam);
    readSection(xmlRoot, L"gesture_param", m_tagGestureParam);
    readSection(xmlRoot, L"animation_param", m_tagAnimationParam);
}

/** Without a path or without a folder in the file's own path the result is empty. */
CString CConfigParser::makeAbsolute(const CString& strPath) const {
    return CPath::generateAbsolutePath(m_strFolder, strPath);
}

void CConfigParser::readLogOutput(const CXMLElement& xmlRoot) {
    tagLogOutput output;
    if (!xmlRoot.getSingleChild(L"log_output"))
        return;
    readSection(xmlRoot, L"log_output", output);
    output.file_path_linux = makeAbsolute(output.file_path_linux);
    m_tagLogOutput = output;
}

void CConfigParser::readMemReportOutput(const CXMLElement& xmlRoot) {
    if (const CXMLElement* const pSection = xmlRoot.getSingleChild(L"mem_report_output"))
        m_strMemReportOutput = makeAbsolute(pSection->getAttributeString(L"file_path_linux", STRING_NULL));
}

void CConfigParser::readThreads(const CXMLElement& xmlRoot) {
    const CXMLElement* const pSet = xmlRoot.getSingleChild(L"thread_set");
    if (!pSet)
        return;
    CDataArray<CXMLElement*> aryThreads;
    pSet->getChildren(L"thread", aryThreads);
    for (unsigned int i = 0; i < aryThreads.getSize(); ++i) {
        const CXMLElement& xmlThread = *aryThreads[i];
        const CString& strID = xmlThread.getAttributeString(L"id", STRING_NULL);
        for (unsigned int uiSlot = 0; uiSlot < THREAD_COUNT; ++uiSlot) {
            if (strID == THREAD_ID[uiSlot]) {
                m_tagThread.name[uiSlot] = xmlThread.getAttributeString(L"name", STRING_NULL);
                m_tagThread.priority[uiSlot] = xmlThread.getAttributeInt(L"priority", THREAD_PRIORITY);
            }
        }
    }
}

void CConfigParser::readSurfaces(const CXMLElement& xmlRoot) {
    const CXMLElement* const pSet = xmlRoot.getSingleChild(L"surface_set");
    if (!pSet)
        return;
    CDataArray<CXMLElement*> arySurfaces;
    pSet->getChildren(L"surface", arySurfaces);
    for (unsigned int i = 0; i < arySurfaces.getSize(); ++i) {
        tagSurface* const pSurface = new tagSurface;
        if (!pSurface)
            return;
        tagSurface::visit(*pSurface, CAttributeReader(*arySurfaces[i]));
        m_arySurfaces.add(pSurface);
        if (m_arySurfaces[m_arySurfaces.getSize() - 1] != pSurface) {
            delete pSurface; // no memory for its place
            return;
        }
    }
}

bool CConfigParser::save() {
    CXMLElement* const pRoot = m_xmlDocument.getRootElement();
    if (!pRoot)
        return false;
    if (!m_bDirty)
        return true;
    CXMLElement* const pSurfaceSet = pRoot->getSingleChild(L"surface_set");
    pRoot->setAttribute(L"merge_window", m_bMergeWindow);
    if (pSurfaceSet)
        writeSurfaces(*pSurfaceSet);
    if (!m_xmlDocument.saveToFile(m_strFilePath, true))
        return false;
    m_bDirty = false;
    return true;
}

/** A surface goes to the child of its index, whatever that child's name: "surface" is meant to be the only kind. */
void CConfigParser::writeSurfaces(CXMLElement& xmlSurfaceSet) const {
    for (unsigned int i = 0; i < m_arySurfaces.getSize(); ++i) {
        CXMLElement* const pElement = xmlSurfaceSet.getChildAt(i);
        if (!pElement)
            return; // surfaces of a second load have no place in this document
        const tagSurface& surface = *m_arySurfaces[i];
        pElement->setAttribute(L"width", surface.width);
        pElement->setAttribute(L"height", surface.height);
        pElement->setAttribute(L"initial_color", CStringConverter::format(L"0x%08X", surface.initial_color));
    }
}

void CConfigParser::close() {
    m_arySurfaces.clear();
    m_xmlDocument.empty();
    m_bDirty = false;
}

void CConfigParser::setMergeWindow(bool bMergeWindow) noexcept {
    m_bDirty = m_bDirty || bMergeWindow != m_bMergeWindow;
    m_bMergeWindow = bMergeWindow;
}

unsigned int CConfigParser::getSurfaceCount(int iDisplay) const noexcept {
    return countUsed(m_arySurfaces, [=](const tagSurface& surface) { return surface.display_id == iDisplay; });
}

unsigned int CConfigParser::getSurfaceCount(int iDisplay, int iLayer) const noexcept {
    return countUsed(m_arySurfaces, [=](const tagSurface& surface) { return isOnLayer(surface, iDisplay, iLayer); });
}

CConfigParser::tagSurface* CConfigParser::getSurfaceByByName(const CString& strName) const noexcept {
    for (unsigned int i = 0; i < m_arySurfaces.getSize(); ++i) {
        if (m_arySurfaces[i]->name == strName)
            return m_arySurfaces[i];
    }
    return nullptr;
}

void CConfigParser::changeSurfaceSize(unsigned int uiIndex, unsigned int uiWidth, unsigned int uiHeight) noexcept {
    tagSurface* const pSurface = m_arySurfaces[uiIndex];
    if (!pSurface)
        return;
    changeSize(pSurface->width, uiWidth, pSurface->width_default);
    changeSize(pSurface->height, uiHeight, pSurface->height_default);
}

/** Compares with the request and not with what comes of it, on purpose: 0 is a change each time. */
void CConfigParser::changeSize(unsigned int& uiCurrent, unsigned int uiRequested, unsigned int uiDefault) noexcept {
    if (uiRequested == uiCurrent)
        return;
    uiCurrent = uiRequested != 0 ? uiRequested : uiDefault;
    m_bDirty = true;
}

void CConfigParser::setSurfaceInitialColor(unsigned int uiIndex, unsigned int uiColor) noexcept {
    tagSurface* const pSurface = m_arySurfaces[uiIndex];
    if (!pSurface || pSurface->initial_color == uiColor)
        return;
    pSurface->initial_color = uiColor;
    m_bDirty = true;
}

void CConfigParser::setSurfaceParam(unsigned int uiIndex, void* pParam) noexcept {
    if (tagSurface* const pSurface = m_arySurfaces[uiIndex])
        pSurface->param = pParam;
}

unsigned int CConfigParser::getLayerCount(int iDisplay) const {
    CSet<int, tagNumCompare<int>> setLayers;
    for (unsigned int i = 0; i < m_arySurfaces.getSize(); ++i) {
        if (m_arySurfaces[i]->use && m_arySurfaces[i]->display_id == iDisplay)
            setLayers.add(m_arySurfaces[i]->layer_id);
    }
    return setLayers.getCount();
}

unsigned int CConfigParser::getDisplayCount() const {
    CSet<int, tagNumCompare<int>> setDisplays;
    for (unsigned int i = 0; i < m_arySurfaces.getSize(); ++i) {
        if (m_arySurfaces[i]->use)
            setDisplays.add(m_arySurfaces[i]->display_id);
    }
    return setDisplays.getCount();
}

bool CConfigParser::isFirstSurfaceInLayer(unsigned int uiIndex) const noexcept {
    const tagSurface* const pSurface = m_arySurfaces[uiIndex];
    if (!pSurface)
        return true;
    for (unsigned int i = uiIndex; i-- > 0;) {
        if (m_arySurfaces[i]->use)
            return !isOnLayer(*m_arySurfaces[i], pSurface->display_id, pSurface->layer_id);
    }
    return true;
}
} // namespace Orlix
