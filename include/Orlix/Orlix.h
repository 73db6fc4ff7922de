#pragma once

// The whole library; a source that uses a part of it includes that class's header instead.
#include <Orlix/foundation/CArrayPtr.h>
#include <Orlix/foundation/CAutoSync.h>
#include <Orlix/foundation/CDataArray.h>
#include <Orlix/foundation/CDataList.h>
#include <Orlix/foundation/CImpSyncObject.h>
#include <Orlix/foundation/CImpWaitObject.h>
#include <Orlix/foundation/CLinkedList.h>
#include <Orlix/foundation/CObject.h>
#include <Orlix/foundation/CObjectArray.h>
#include <Orlix/foundation/CObjectList.h>
#include <Orlix/foundation/CObjectPoolRef.h>
#include <Orlix/foundation/CObjectPtr.h>
#include <Orlix/foundation/COwningContainer.h>
#include <Orlix/foundation/CSyncObject.h>
#include <Orlix/foundation/CWaitObject.h>
#include <Orlix/foundation/ISyncObject.h>
#include <Orlix/foundation/IWaitObject.h>
#include <Orlix/foundation/OrlixApi.h>
#include <Orlix/memory/CMemAllocator.h>
#include <Orlix/memory/CMemManager.h>
#include <Orlix/memory/CMemory.h>
#include <Orlix/memory/IMemManagerListener.h>
