#include <fokrazo/paged_search.h>

#include <fokrazo/ipcmessage.h>
#include <fokrazo/session.h>
#include "lrpc/session/exchange.h"

namespace vesk {

PagedSearchHandle::PagedSearchHandle(LocalRpcSession* session, int handle)
    : m_session(session), m_handle(handle), m_page(ADObjectList::create()) {}

ADObject PagedSearchHandle::getNext() {
  if (m_finished) return ADObject();
  if (m_page.empty()) {
    fetchPage();
    if (m_finished) return ADObject();
  }
  ADObject next = *m_position;
  if (++m_position == m_page.end()) m_page = ADObjectList::create();
  return next;
}

// An empty page ends the search.
void PagedSearchHandle::fetchPage() {
  Exchange exchange(*m_session, IPC_OP_LDAP_PAGED_NEXT, m_handle);
  if (exchange.ask() != VR_SUCCESS) exchange.reply.getAndThrowIPCException();
  m_page = exchange.reply.getADObjectList();
  m_position = m_page.begin();
  m_finished = m_page.empty();
}

}  // namespace vesk
