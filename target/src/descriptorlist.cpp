#include "descriptorlist.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>

namespace showbudget
{
namespace
{
constexpr int NO_DESCRIPTOR = 0; // what the first descriptor of a process is, so never one of ours
constexpr int MAX_DESCRIPTORS = 64;

std::atomic<int> g_Descriptors[MAX_DESCRIPTORS];

void Replace( int nBefore, int nAfter )
{
	for ( std::atomic<int> &nDescriptor : g_Descriptors )
	{
		int nExpected = nBefore;
		if ( nDescriptor.compare_exchange_strong( nExpected, nAfter ) )
			return;
	}
}
} // namespace

void KeepDescriptor( int nDescriptor )
{
	fcntl( nDescriptor, F_SETFD, FD_CLOEXEC );
	Replace( NO_DESCRIPTOR, nDescriptor );
}

void ForgetDescriptor( int nDescriptor )
{
	Replace( nDescriptor, NO_DESCRIPTOR );
}

void CloseDescriptorsOfParent()
{
	for ( std::atomic<int> &nDescriptor : g_Descriptors )
	{
		if ( const int nOpen = nDescriptor.exchange( NO_DESCRIPTOR ) )
			close( nOpen );
	}
}
} // namespace showbudget
