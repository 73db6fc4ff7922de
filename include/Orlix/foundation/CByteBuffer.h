#pragma once

#include <Orlix/foundation/CObject.h>

#include <cstring>

namespace Orlix {

/** A growing block of bytes with one position, at which records are written and read in the machine's byte order.
 *
 *  A write ends the content where it ends itself: writing in the middle cuts off what lay behind, on purpose. It grows
 *  by a fixed number of spare bytes. Without memory, "Out of memory." is logged and nothing changes.
 *  Threads: no lock, one at a time. Ownership: its block is its own unless one was attached without. */
class ORLIX_API CByteBuffer : public CObject {
    ORLIX_HEAP_CLASS(L"CByteBuffer")

public:
    /** @param uiSize bytes of content at once, all zero. @param uiIncrement spare bytes of each growth. */
    explicit CByteBuffer(unsigned int uiSize = 0, unsigned int uiIncrement = 1024);
    CByteBuffer(const CByteBuffer&) = delete;
    CByteBuffer& operator=(const CByteBuffer&) = delete;
    ~CByteBuffer() override;

    unsigned int getSize() const noexcept { return m_uiSize; }
    unsigned int getCapacity() const noexcept { return m_uiCapacity; }
    unsigned int getPosition() const noexcept { return m_uiPosition; }
    /** The size less the position; it wraps while the position is above the size, and then nothing can be read. */
    unsigned int bytesAvailable() const noexcept { return m_uiSize - m_uiPosition; }
    /** The bytes, valid until the next growth; null before the first. */
    unsigned char* buffer() const noexcept { return m_pBuffer; }

    /** As requstSize, but 0 clears. */
    void setSize(unsigned int uiSize);
    /** @param uiPosition at most the size, which is taken for more. */
    void setPosition(unsigned int uiPosition) noexcept { m_uiPosition = uiPosition < m_uiSize ? uiPosition : m_uiSize; }
    void setIncrement(unsigned int uiIncrement) noexcept { m_uiIncrement = uiIncrement; }

    /** Frees an own block. One that is not owned stays attached, with a capacity and a size of 0. */
    void clear() noexcept;
    /** Clears, then takes over a block of the caller's.
     *  @param pBuffer null for no block, of no capacity and size. With bOwn it has to come from CMemory.
     *  @param uiCapacity bytes that the block really has: writes go that far without a look at the block.
     *  @param uiSize bytes of it that are content, at most uiCapacity.
     *  @param bOwn whether the block is freed here; one that is not owned never grows. */
    void attachBuffer(unsigned char* pBuffer, unsigned int uiCapacity, unsigned int uiSize, bool bOwn) noexcept;
    /** Clears, so an own block is freed; what comes next is owned again. It gives the block to nobody.
     *  A block that was not owned is kept in mind and FREED by the next growth, clearing or attaching: then it has to
     *  come from CMemory. The destructor alone leaves it alone. */
    void detachBuffer() noexcept;

    /** Sets the size of the content. What a growth adds is zero; within the capacity the bytes are as they were left.
     *  The position stays. Beyond the capacity of a block that is not owned nothing happens. */
    void requstSize(unsigned int uiSize);

    /** Writes at the position and ends the content there.
     *  @param pData may lie in the buffer; null does nothing, unless uiCount is 0. @param uiCount 0 ends the content at
     *  the position. A block that is not owned must have room for the bytes: there those beyond the capacity are
     *  written too, and the size stays. */
    void writeBuffer(const unsigned char* pData, unsigned int uiCount);
    void writeBYTE(unsigned char ucValue) { writeValue(ucValue); }
    void writeSHORT(short sValue) { writeValue(sValue); }
    void writeUSHORT(unsigned short usValue) { writeValue(usValue); }
    void writeINT(int iValue) { writeValue(iValue); }
    void writeUINT(unsigned int uiValue) { writeValue(uiValue); }
    void writeFLOAT(float fValue) { writeValue(fValue); }
    void writeDOUBLE(double dValue) { writeValue(dValue); }

    /** Reads what there is at the position, at most uiCount bytes. @param pTarget null reads nothing.
     *  @return the bytes read. */
    unsigned int readBuffer(unsigned char* pTarget, unsigned int uiCount) noexcept;
    /** The byte at the position, which must lie within the block: unlike the others, this one checks nothing. */
    unsigned char readBYTE() noexcept { return m_pBuffer[m_uiPosition++]; }
    // These give 0 if less than a whole value is left, and the position moves to the end all the same.
    short readSHORT() noexcept { return readValue<short>(); }
    unsigned short readUSHORT() noexcept { return readValue<unsigned short>(); }
    int readINT() noexcept { return readValue<int>(); }
    unsigned int readUINT() noexcept { return readValue<unsigned int>(); }
    float readFLOAT() noexcept { return readValue<float>(); }
    double readDOUBLE() noexcept { return readValue<double>(); }

    /** Takes bytes off the front of the content and moves the rest there; the position is behind the rest, so that the
     *  next write appends. @param uiCount at least the size empties the content; the capacity stays. */
    void moveToHead(unsigned int uiCount) noexcept;

    /** Copies forward, from the first byte to the last. Blocks may overlap: towards a lower address the block is moved
     *  whole, towards a higher one the bytes before the target repeat in it. Null copies nothing. */
    static void memcopy(unsigned char* pTarget, const unsigned char* pSource, unsigned int uiCount) noexcept;
    /** Fills with the low byte of a value; null fills nothing. */
    static void memclear(unsigned char* pTarget, int iValue, unsigned int uiCount) noexcept;

protected:
    unsigned char* m_pBuffer;
    bool m_bOwn; // the block is freed and may grow; also set when there is none
    unsigned int m_uiCapacity;
    unsigned int m_uiSize;      // at most the capacity
    unsigned int m_uiIncrement; // spare bytes of each growth
    unsigned int m_uiPosition;  // above the size after the content shrank below it
    bool m_bDetached;           // m_pBuffer was not owned when it was detached

private:
    bool changeSize(unsigned int uiSize, const unsigned char* pInUse, unsigned char*& pReplaced);
    bool grow(unsigned int uiSize, const unsigned char* pInUse, unsigned char*& pReplaced);
    unsigned char* extendBlock(unsigned int uiCapacity, const unsigned char* pInUse);

    template <class T> void writeValue(T tValue) {
        // The first test is false where the sum would wrap.
        if (m_uiPosition <= m_uiCapacity && sizeof(T) <= m_uiCapacity - m_uiPosition) {
            std::memcpy(m_pBuffer + m_uiPosition, &tValue, sizeof(T));
            m_uiSize = m_uiPosition += static_cast<unsigned int>(sizeof(T));
            return;
        }
        unsigned char aryBytes[sizeof(T)];
        std::memcpy(aryBytes, &tValue, sizeof(T));
        writeBuffer(aryBytes, sizeof(T));
    }

    template <class T> T readValue() noexcept {
        T tValue = T();
        if (m_uiPosition <= m_uiSize && sizeof(T) <= m_uiSize - m_uiPosition) {
            std::memcpy(&tValue, m_pBuffer + m_uiPosition, sizeof(T));
            m_uiPosition += static_cast<unsigned int>(sizeof(T));
        } else if (m_uiPosition < m_uiSize) {
            m_uiPosition = m_uiSize;
        }
        return tValue;
    }
};
} // namespace Orlix
