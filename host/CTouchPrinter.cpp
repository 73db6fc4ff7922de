#include "CTouchPrinter.h"

#include "CTouchStatistics.h"

#include <Orlix/foundation/CStringConverter.h>

using namespace Orlix;

void CTouchPrinter::onTouchPress(const CCursor& cursor) { print(L"press", cursor); }

void CTouchPrinter::onTouchMove(const CCursor& cursor) { print(L"move", cursor); }

void CTouchPrinter::onTouchRelease(const CCursor& cursor) { print(L"release", cursor); }

void CTouchPrinter::onTouchWheel(const CCursor& cursor) {
    m_statistics.onHandled(cursor.getTouchStatus());
    CStringConverter::printf(L"wheel x=%d y=%d distance=%d\n", cursor.getX(), cursor.getY(), cursor.getDistance());
}

void CTouchPrinter::print(const wchar_t* pWhat, const CCursor& cursor) {
    m_statistics.onHandled(cursor.getTouchStatus());
    CStringConverter::printf(L"%s id=%u x=%d y=%d dx=%d dy=%d vx=%d vy=%d t=%u\n", pWhat, cursor.getID(), cursor.getX(),
                             cursor.getY(), cursor.getXDelta(), cursor.getYDelta(), cursor.getXSpeed(),
                             cursor.getYSpeed(), cursor.getTimestamp());
}
