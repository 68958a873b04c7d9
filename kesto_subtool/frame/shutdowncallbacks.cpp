#include "frame/shutdowncallbacks.h"

#include <utility>

void CShutdownCallbacks::Add( std::function<void()> callback )
{
	m_Callbacks.push_back( std::move( callback ) );
}

void CShutdownCallbacks::Run()
{
	while ( !m_Callbacks.empty() )
	{
		const std::function<void()> callback = std::move( m_Callbacks.back() );
		m_Callbacks.pop_back();
		callback();
	}
}
