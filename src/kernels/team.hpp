// A team of threads for one kernel call: the work is cut into chunks that write disjoint parts
// of the output, so the answer does not depend on how many threads share them.
#pragma once

#include <atomic>

namespace qnum::kern::team {

// One chunk of work: computes chunk `index`; returns false when it could not run on this
// thread (no workspace), and the caller then runs it itself after the others. `stop` becomes
// nonzero when another member faulted; long chunks look at it between blocks and return.
using Body = bool (*)(void* context, int index, const std::atomic<int>& stop);

// Runs chunks 0 .. chunks-1 on `threads` threads, the calling thread among them, each chunk
// taken by the first member free (more chunks than threads even out the members' speeds). The other
// members never touch the error stack and never create a per-thread context. When the caller
// runs inside a trapped public routine, a fault in any member stops the others at their next
// look at `stop`, and once all have returned it is raised again on the calling thread, where
// the routine's trap reports it as for a fault of its own (that call does not return).
// Returns true when every chunk ran.
bool run(int threads, int chunks, Body body, void* context);

// How many chunks the calling thread had to run after its team, since the process started
// (tests only).
long late_chunks();

}  // namespace qnum::kern::team
