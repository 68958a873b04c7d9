#include "socketlist.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>

namespace showbudget
{
namespace
{
constexpr int NO_SOCKET = 0; // what the first descriptor of a process is, so never a socket of ours
constexpr int MAX_SOCKETS = 64;

std::atomic<int> g_Sockets[MAX_SOCKETS];

void Replace( int nBefore, int nAfter )
{
	for ( std::atomic<int> &nSocket : g_Sockets )
	{
		int nExpected = nBefore;
		if ( nSocket.compare_exchange_strong( nExpected, nAfter ) )
			return;
	}
}
} // namespace

void KeepSocket( int nSocket )
{
	fcntl( nSocket, F_SETFD, FD_CLOEXEC );
	Replace( NO_SOCKET, nSocket );
}

void ForgetSocket( int nSocket )
{
	Replace( nSocket, NO_SOCKET );
}

void CloseSocketsOfParent()
{
	for ( std::atomic<int> &nSocket : g_Sockets )
	{
		if ( const int nOpen = nSocket.exchange( NO_SOCKET ) )
			close( nOpen );
	}
}
} // namespace showbudget
