#include "session.h"

#include <malloc.h>

#include <chrono>
#include <thread>

#include "sanitizer.h"

#if defined( HAS_SANITIZER )
#include <sanitizer/allocator_interface.h>
#endif

bool WaitUntil( const std::function<bool()> &condition )
{
	const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds( 60 );
	while ( !condition() )
	{
		if ( std::chrono::steady_clock::now() > deadline )
		{
			ADD_FAILURE() << "what the test waits for never came";
			return false;
		}
		std::this_thread::yield();
	}
	return true;
}

uint64_t NowMicroseconds()
{
	const auto now = std::chrono::steady_clock::now().time_since_epoch();
	return static_cast<uint64_t>( std::chrono::duration_cast<std::chrono::microseconds>( now ).count() );
}

size_t AllocatedBytes()
{
#if defined( HAS_SANITIZER )
	return __sanitizer_get_current_allocated_bytes();
#else
	const struct mallinfo2 info = mallinfo2();
	return info.uordblks + info.hblkhd;
#endif
}

uint64_t BeBusy( uint64_t nMicroseconds )
{
	const uint64_t nBegin = NowMicroseconds();
	uint64_t nNow = nBegin;
	while ( nNow < nBegin + nMicroseconds )
		nNow = NowMicroseconds();
	return nNow - nBegin;
}

showbudget::Settings CSession::MakeSettings()
{
	showbudget::Settings settings;
	settings.m_pName = "test engine";
	settings.m_nPort = 0;
	return settings;
}

void CSession::Start()
{
	showbudget::Settings settings = MakeSettings();
	settings.m_pLog = []( showbudget::Severity, const char *pLine, void *pContext )
	{
		auto &session = *static_cast<CSession *>( pContext );
		std::lock_guard lock( session.m_Mutex );
		session.m_Log.push_back( pLine );
	};
	settings.m_pLogContext = this;
	ASSERT_TRUE( showbudget::Start( settings ) );
	ASSERT_NE( showbudget::Port(), 0 );
}

void CSession::RestartWith( const showbudget::ConnectionTimes &times )
{
	showbudget::Stop();
	showbudget::g_Times = times;
	Start();
}

void CSession::TearDown()
{
	showbudget::Stop();
	showbudget::g_Times = {};
	// What follows must not inherit a frame that was begun here.
	showbudget::EndFrame();
}

std::vector<std::string> CSession::LogLines()
{
	std::lock_guard lock( m_Mutex );
	return m_Log;
}

bool CSession::WaitForLog( const std::string &part )
{
	return WaitUntil(
		[&]
		{
			for ( const std::string &line : LogLines() )
			{
				if ( line.find( part ) != std::string::npos )
					return true;
			}
			return false;
		} );
}

bool CSession::WaitUntilWanted( uint32_t nWanted )
{
	return WaitUntil( [nWanted] { return showbudget::detail::g_nWanted.load() == nWanted; } );
}
