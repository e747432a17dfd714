#include "rastrel/platform/host/selected_object_list.h"

#include "rastrel/platform/host/object_store.h"

using rastrel::host::ObjectHandle;
using rastrel::host::ObjectStore;

CSelectedObjectList::CSelectedObjectList(ObjectStore& store)
    : m_Store(store), m_List(store.DSCreateSelectedList()) {}

CSelectedObjectList::~CSelectedObjectList() { m_Store.DBDestroyList(m_List); }

ObjectHandle CSelectedObjectList::GetFirstMember() { return m_Store.DBGetFirstMember(m_List); }

ObjectHandle CSelectedObjectList::GetNextMember() { return m_Store.DBGetNextMember(m_List); }
