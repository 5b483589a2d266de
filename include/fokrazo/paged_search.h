/// A search whose objects the daemon sends page by page.
#pragma once

#include <fokrazo/adobject.h>
#include <fokrazo/export.h>

namespace vesk {

class LocalRpcSession;

/// Returns the objects of one search. Created by LocalRpcSession::ldapPagedSearch; the session must outlive
/// it. Copies share the page but not the position: advance only one of them. Destruction does not notify the
/// daemon. Thread-safety: one thread at a time, the session's.
class FOKRAZO_API PagedSearchHandle {
 public:
  /// `handle` is the daemon's number of a search started on `session`.
  PagedSearchHandle(LocalRpcSession* session, int handle);

  /// The next object; an empty one at and after the end. One exchange per page. May be called again after an
  /// exception.
  /// @throws IPCException the daemon's failure; what LocalRpcSession::executeWithRetry throws
  ADObject getNext();

 private:
  void fetchPage();

  LocalRpcSession* m_session;
  int m_handle;
  bool m_finished = false;
  ADObjectList m_page;
  ADObjectList::iterator m_position;  // the next to return; meaningless while the page is empty
};

}  // namespace vesk
