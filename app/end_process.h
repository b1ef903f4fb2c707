#pragma once

/// Ends the process with `status`. Several threads may come here at once (a run folder that could
/// not be made fails eight collectors in the same millisecond): the first one ends the process, the
/// others wait for that. Console text that is not yet written is waited for, unless a stop signal
/// comes.
[[noreturn]] void endProcess(int status);
