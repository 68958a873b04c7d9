// The sockets that are open, kept so that a forked child can let go of them: as long as it held them, no console would
// notice that the engine is gone.
#pragma once

namespace showbudget
{
// Marks the socket as closed by exec, too. Called by one thread at a time.
void KeepSocket( int nSocket );
void ForgetSocket( int nSocket );

// In a child, between fork and everything else; touches nothing that has a lock.
void CloseSocketsOfParent();
} // namespace showbudget
