# Every header that is installed; fokrazo.h includes all the others.
set(FOKRAZO_PUBLIC_HEADERS
  util/include/error_util.h
  util/include/export.h
  util/include/log.h
  util/include/mutex.h
  util/include/properties.h
  util/include/thread.h
)
