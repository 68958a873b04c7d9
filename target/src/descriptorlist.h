// The sockets and files that are open, kept so that a forked child can let go of them: as long as it held them, no
// console would notice that the engine is gone, and a recording would stay locked.
#pragma once

namespace showbudget
{
// Marks the descriptor as closed by exec, too. Any thread.
void KeepDescriptor( int nDescriptor );
void ForgetDescriptor( int nDescriptor );

// In a child, between fork and everything else; touches nothing that has a lock.
void CloseDescriptorsOfParent();
} // namespace showbudget
