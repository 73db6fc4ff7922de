#pragma once

#include <Orlix/formats/CXMLParser.h>
#include <Orlix/foundation/CObjectArray.h>
#include <Orlix/foundation/CString.h>

namespace Orlix {

/** The engine's settings: built-in defaults, replaced by what one configuration file says.
 *
 *  The file is described in docs/formats.md, where each attribute has the name of the field here. Load it before the
 *  components start that read the settings: they read the records in place, without a lock.
 *  Threads: load, save, close and the setters on the host thread, before other threads read. */
class ORLIX_API CConfigParser {
    ORLIX_HEAP_CLASS(L"CConfigParser")

public:
    // Each record names its attributes in visit, in the order of the file: visitor(L"name", field) for each field.

    /** Which levels are logged. */
    struct tagLogLevel {
        bool info = true;
        bool warning = true;
        bool error = true;
        bool debug = false;
        bool performance = false;

        template <class TSelf, class TVisitor> static void visit(TSelf& self, TVisitor&& visitor) {
            visitor(L"info", self.info);
            visitor(L"warning", self.warning);
            visitor(L"error", self.error);
            visitor(L"debug", self.debug);
            visitor(L"performance", self.performance);
        }
    };

    /** Where the log goes. */
    struct tagLogOutput {
        bool terminal = true;
        unsigned int file_size = 1048576; // bytes
        CString file_path_linux;          // absolute; empty for no file

        template <class TSelf, class TVisitor> static void visit(TSelf& self, TVisitor&& visitor) {
            visitor(L"terminal", self.terminal);
            visitor(L"file_size", self.file_size);
            visitor(L"file_path_linux", self.file_path_linux);
        }
    };

    /** The threads that have a name and a priority. */
    enum EThread : unsigned int {
        THREAD_MQ,
        THREAD_TM, ///< timers
        THREAD_SC,
        THREAD_GR,
        THREAD_AP, ///< audio and sound players
        THREAD_SM, ///< shared memory
        THREAD_DT, ///< data transfer
        THREAD_HC,
        THREAD_WB,
        THREAD_RP,
        THREAD_RS,
        THREAD_COUNT
    };

    static constexpr int THREAD_PRIORITY = 51; // of a thread that the file does not name

    /** Names and priorities by EThread. */
    struct tagThread {
        CString name[THREAD_COUNT];
        int priority[THREAD_COUNT] = {THREAD_PRIORITY, THREAD_PRIORITY, THREAD_PRIORITY, THREAD_PRIORITY,
                                      THREAD_PRIORITY, THREAD_PRIORITY, THREAD_PRIORITY, THREAD_PRIORITY,
                                      THREAD_PRIORITY, THREAD_PRIORITY, THREAD_PRIORITY};
    };

    /** One surface; in use, it takes part in the counts by display and layer. */
    struct tagSurface {
        ORLIX_HEAP_CLASS(L"CConfigParser::tagSurface")
        bool use = false;
        CString name;
        CString display_name;
        int display_id = 0;
        int layer_id = 0;
        int surface_id = 0;
        int offset_x = 0;
        int offset_y = 0;
        unsigned int width = 0;
        unsigned int width_default = 0; // what a change of the width to 0 gives
        unsigned int height = 0;
        unsigned int height_default = 0;
        bool enable_touch = false;
        bool enable_gesture = false;
        unsigned int initial_color = 0;
        void* param = nullptr; // of setSurfaceParam, not in the file, not owned

        template <class TSelf, class TVisitor> static void visit(TSelf& self, TVisitor&& visitor) {
            visitor(L"use", self.use);
            visitor(L"name", self.name);
            visitor(L"display_name", self.display_name);
            visitor(L"display_id", self.display_id);
            visitor(L"layer_id", self.layer_id);
            visitor(L"surface_id", self.surface_id);
            visitor(L"offset_x", self.offset_x);
            visitor(L"offset_y", self.offset_y);
            visitor(L"width", self.width);
            visitor(L"width_default", self.width_default);
            visitor(L"height", self.height);
            visitor(L"height_default", self.height_default);
            visitor(L"enable_touch", self.enable_touch);
            visitor(L"enable_gesture", self.enable_gesture);
            visitor(L"initial_color", self.initial_color);
        }
    };

    // The records from here to tagRenderText, and the last two, are kept for the layers above: nothing here reads them.

    struct tagResourceCache {
        unsigned int character = 1024;
        unsigned int image = 100;
        unsigned int shader = 100;
        unsigned int mesh = 50;
        unsigned int audio = 10;

        template <class TSelf, class TVisitor> static void visit(TSelf& self, TVisitor&& visitor) {
            visitor(L"character", self.character);
            visitor(L"image", self.image);
            visitor(L"shader", self.shader);
            visitor(L"mesh", self.mesh);
            visitor(L"audio", self.audio);
        }
    };

    struct tagRenderCache {
        unsigned int text_texture_size = 256;
        unsigned int character = 1024;
        unsigned int small_texture = 100;
        unsigned int big_texture = 10;
        unsigned int big_texture_width = 1280;
        unsigned int big_texture_height = 720;
        unsigned int mesh = 50;
        unsigned int program = 100;

        template <class TSelf, class TVisitor> static void visit(TSelf& self, TVisitor&& visitor) {
            visitor(L"text_texture_size", self.text_texture_size);
            visitor(L"character", self.character);
            visitor(L"small_texture", self.small_texture);
            visitor(L"big_texture", self.big_texture);
            visitor(L"big_texture_width", self.big_texture_width);
            visitor(L"big_texture_height", self.big_texture_height);
            visitor(L"mesh", self.mesh);
            visitor(L"program", self.program);
        }
    };

    struct tagRenderParam {
        bool android_simulator = true;
        bool android_geometry = true;
        bool vertical_sync = true;
        bool high_quality = true;
        bool anti_aliasing = true;
        unsigned int sample_count = 4;
        CString image_no_extern = L"png";

        template <class TSelf, class TVisitor> static void visit(TSelf& self, TVisitor&& visitor) {
            visitor(L"android_simulator", self.android_simulator);
            visitor(L"android_geometry", self.android_geometry);
            visitor(L"vertical_sync", self.vertical_sync);
            visitor(L"high_quality", self.high_quality);
            visitor(L"anti_aliasing", self.anti_aliasing);
            visitor(L"sample_count", self.sample_count);
            visitor(L"image_no_extern", self.image_no_extern);
        }
    };

    struct tagRenderGeometry {
        int rectangle_offset_x = 1;
        int rectangle_offset_y = 1;

        template <class TSelf, class TVisitor> static void visit(TSelf& self, TVisitor&& visitor) {
            visitor(L"rectangle_offset_x", self.rectangle_offset_x);
            visitor(L"rectangle_offset_y", self.rectangle_offset_y);
        }
    };

    struct tagRenderText {
        unsigned int scale_width = 100;
        unsigned int scale_height = 100;
        bool auto_hinting = true;
        bool support_complex_language = false;

        template <class TSelf, class TVisitor> static void visit(TSelf& self, TVisitor&& visitor) {
            visitor(L"scale_width", self.scale_width);
            visitor(L"scale_height", self.scale_height);
            visitor(L"auto_hinting", self.auto_hinting);
            visitor(L"support_complex_language", self.support_complex_language);
        }
    };

    /** How touches are told apart; the first three are read at each touch. */
    struct tagTouchParam {
        unsigned int waver_distance = 25;             // pixels
        unsigned int long_press_delay = 500;          // ms
        unsigned int continuous_press_interval = 100; // ms
        unsigned int double_tap_interval = 200;       // ms

        template <class TSelf, class TVisitor> static void visit(TSelf& self, TVisitor&& visitor) {
            visitor(L"waver_distance", self.waver_distance);
            visitor(L"long_press_delay", self.long_press_delay);
            visitor(L"continuous_press_interval", self.continuous_press_interval);
            visitor(L"double_tap_interval", self.double_tap_interval);
        }
    };

    struct tagGestureParam {
        unsigned int finger_time_interval = 200;
        unsigned int flip_min_distance = 50;
        unsigned int rotate_min_angle = 5;
        unsigned int spread_pinch_min_distance = 50;

        template <class TSelf, class TVisitor> static void visit(TSelf& self, TVisitor&& visitor) {
            visitor(L"finger_time_interval", self.finger_time_interval);
            visitor(L"flip_min_distance", self.flip_min_distance);
            visitor(L"rotate_min_angle", self.rotate_min_angle);
            visitor(L"spread_pinch_min_distance", self.spread_pinch_min_distance);
        }
    };

    struct tagAnimationParam {
        unsigned int fps = 50;

        template <class TSelf, class TVisitor> static void visit(TSelf& self, TVisitor&& visitor) {
            visitor(L"fps", self.fps);
        }
    };

    CConfigParser();
    CConfigParser(const CConfigParser&) = delete;
    CConfigParser& operator=(const CConfigParser&) = delete;
    virtual ~CConfigParser();

    /** The settings, made with their defaults by the first call. Not synchronised. */
    static CConfigParser* getInstance();
    /** Deletes the settings, if there are any. Not synchronised. */
    static void deleteInstance();

    /** The name of a thread's slot in the file, such as "tm". @param eThread below THREAD_COUNT. */
    static const wchar_t* getThreadID(EThread eThread) noexcept;

    /** Reads a file. What it does not name gets its default, in a section that is there; a section that is missing
     *  leaves its settings alone. Surfaces are added to those of an earlier load unless close came between.
     *  @return false, and all settings stay, if the file cannot be read or has a syntax error. */
    bool load(const CString& strPath);

    /** Writes merge_window and each surface's size and colour back to the loaded file, if one of them has changed.
     *  Comments of the file are lost, all other settings are kept.
     *  @return false if the file did not set use_for_studio, after close and after a load that failed, and if the file
     *  cannot be written. */
    bool save();

    /** Deletes all surfaces and what save needs. The other settings keep their values. */
    void close();

    bool isUsedForStudio() const noexcept { return m_bUsedForStudio; }
    bool isMergeWindow() const noexcept { return m_bMergeWindow; }
    void setMergeWindow(bool bMergeWindow) noexcept;

    const tagLogLevel& getLogLevel() const noexcept { return m_tagLogLevel; }
    const tagLogOutput& getLogOutput() const noexcept { return m_tagLogOutput; }
    /** The absolute path of the memory report; empty for none. */
    const CString& getMemReportOutput() const noexcept { return m_strMemReportOutput; }
    const tagThread& getThread() const noexcept { return m_tagThread; }
    const tagResourceCache& getResourceCache() const noexcept { return m_tagResourceCache; }
    const tagRenderCache& getRenderCache() const noexcept { return m_tagRenderCache; }
    const tagRenderParam& getRenderParam() const noexcept { return m_tagRenderParam; }
    const tagRenderGeometry& getRenderGeometry() const noexcept { return m_tagRenderGeometry; }
    const tagRenderText& getRenderText() const noexcept { return m_tagRenderText; }
    const tagTouchParam& getTouchParam() const noexcept { return m_tagTouchParam; }
    const tagGestureParam& getGestureParam() const noexcept { return m_tagGestureParam; }
    const tagAnimationParam& getAnimationParam() const noexcept { return m_tagAnimationParam; }

    /** All surfaces, in use or not. */
    unsigned int getSurfaceCount() const noexcept { return m_arySurfaces.getSize(); }
    /** The surfaces in use on a display. */
    unsigned int getSurfaceCount(int iDisplay) const noexcept;
    /** The surfaces in use on a layer of a display. */
    unsigned int getSurfaceCount(int iDisplay, int iLayer) const noexcept;
    /** A surface in the order of the file, in use or not, still owned here; null past the end. */
    tagSurface* getSurfaceByIndex(unsigned int uiIndex) const noexcept { return m_arySurfaces[uiIndex]; }
    /** @return the first surface of that name, still owned here; null if there is none. */
    tagSurface* getSurfaceByByName(const CString& strName) const noexcept;

    /** Gives a surface another size in pixels; 0 gives its default. Asking for 0 counts as a change each time, unless
     *  the size is 0. Past the end nothing happens. */
    void changeSurfaceSize(unsigned int uiIndex, unsigned int uiWidth, unsigned int uiHeight) noexcept;
    /** Past the end nothing happens. */
    void setSurfaceInitialColor(unsigned int uiIndex, unsigned int uiColor) noexcept;
    /** @param pParam kept for the caller, not owned, never saved. Past the end nothing happens. */
    void setSurfaceParam(unsigned int uiIndex, void* pParam) noexcept;

    /** The number of different layers among the surfaces in use on a display. */
    unsigned int getLayerCount(int iDisplay) const;
    /** The number of different displays among the surfaces in use. */
    unsigned int getDisplayCount() const;
    /** Whether the nearest surface in use before this one lies on another layer or display; true if there is none, and
     *  past the end. Asks that the file lists the surfaces of a layer together. */
    bool isFirstSurfaceInLayer(unsigned int uiIndex) const noexcept;

protected:
    CString m_strFilePath; // of the last load that succeeded
    CString m_strFolder;   // of that file; what relative paths in it start from
    bool m_bUsedForStudio;
    bool m_bMergeWindow;
    tagLogLevel m_tagLogLevel;
    tagLogOutput m_tagLogOutput;
    CString m_strMemReportOutput;
    tagThread m_tagThread;
    tagResourceCache m_tagResourceCache;
    tagRenderCache m_tagRenderCache;
    tagRenderParam m_tagRenderParam;
    tagRenderGeometry m_tagRenderGeometry;
    tagRenderText m_tagRenderText;
    tagTouchParam m_tagTouchParam;
    tagGestureParam m_tagGestureParam;
    tagAnimationParam m_tagAnimationParam;
    CObjectArray<tagSurface> m_arySurfaces; // in the order of the file
    CXMLParser m_xmlDocument;               // has a root only while m_bUsedForStudio and not closed
    bool m_bDirty;                          // something that save writes has changed

    static CConfigParser* s_pInstance;

private:
    CString makeAbsolute(const CString& strPath) const;
    void readSections(const CXMLElement& xmlRoot);
    void readLogOutput(const CXMLElement& xmlRoot);
    void readMemReportOutput(const CXMLElement& xmlRoot);
    void readThreads(const CXMLElement& xmlRoot);
    void readSurfaces(const CXMLElement& xmlRoot);
    void changeSize(unsigned int& uiCurrent, unsigned int uiRequested, unsigned int uiDefault) noexcept;
    void writeSurfaces(CXMLElement& xmlSurfaceSet) const;
};
} // namespace Orlix
