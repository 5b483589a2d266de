// Compiles only if no public header defines the macros of <utmpx.h> or <netinet/in.h>.

namespace {

enum [[maybe_unused]] Names{EMPTY, FULL, RUN_LVL, BOOT_TIME, DEAD_PROCESS, ut_name, IN_CLASSA, INADDR_NONE};

}  // namespace
