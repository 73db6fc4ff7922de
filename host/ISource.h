#pragma once

/** A source of work that the host plays to its end, on a thread of its own. */
class ISource {
public:
    virtual ~ISource() = default;

    /** On the host thread, before run. @return false with the reason in errno if the input cannot be read. */
    virtual bool open(const char* pPath) = 0;

    /** On the source's thread: posts until the end of the input. @return the exit code that the host ends with. */
    virtual int run() = 0;
};
