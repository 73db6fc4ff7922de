#pragma once

/** Loads the configuration and tells what is wrong with one that cannot be loaded. */
class CConfigLoader {
public:
    /** On failure one report on stderr: the file, for a syntax error also line and column, then the line itself with a
     *  caret under the place. @return false after a failure, and the settings stay as they were. */
    static bool load(const char* pPath);

    /** Loads the engine.xml that ships with the host: beside the executable in the build tree, in share/orlix of the
     *  prefix when installed. Otherwise as load. */
    static bool loadShipped();
};
