#include <Orlix/Orlix.h>

// A host's class on the library's memory route, deleted by its last reference.
class CThing : public Orlix::CObject {};

int main() {
    Orlix::CObjectPtr<CThing> ptrThing(new CThing);
    return ptrThing->getRef() == 1 && Orlix::CMemManager::getInstance() ? 0 : 1;
}
