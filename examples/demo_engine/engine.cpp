#define SHOWBUDGET_PROJECT "core"
#include "engine.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <thread>

#include "budgets.h"

namespace demo
{
namespace
{
using Clock = std::chrono::steady_clock;

constexpr auto FRAME_TIME = std::chrono::nanoseconds( 1000000000 / 60 );
constexpr float TICK_SECONDS = 1.0f / 20.0f;
constexpr int MAX_STEPS_PER_FRAME = 2; // when the simulation falls behind, it slows down rather than the frame rate
constexpr uint64_t EXPLOSION_TICKS = 70;
constexpr uint64_t HITCH_TICKS = 173;
constexpr uint32_t MAX_SLOW_MILLISECONDS = 10000;

// A whole number from 0 to nLimit.
bool ParseNumber( const char *pText, uint32_t nLimit, uint32_t &nNumber )
{
	char *pEnd = nullptr;
	errno = 0;
	const unsigned long nValue = std::strtoul( pText, &pEnd, 10 );
	if ( *pText < '0' || *pText > '9' || *pEnd || errno || nValue > nLimit )
		return false;
	nNumber = static_cast<uint32_t>( nValue );
	return true;
}
} // namespace

CEngine::CEngine( uint32_t nBodies )
	: m_Physics( nBodies )
	, m_LastFrame( Clock::now() )
	, m_NextFrame( m_LastFrame + FRAME_TIME )
{
}

void CEngine::RunFrame()
{
	const Time now = Clock::now();
	const float flSeconds = std::min( 0.25f, std::chrono::duration<float>( now - m_LastFrame ).count() );
	m_LastFrame = now;
	m_flTime += flSeconds;

	const bool bTick = Simulate( flSeconds );
	m_Animation.Update( flSeconds );
	m_Particles.Update( flSeconds );
	m_Streaming.Update();
	DrawFrame();
	m_Audio.Mix( flSeconds, 0.6f + 0.4f * std::sin( m_flTime * 0.9f ) );
	if ( m_nSlowMilliseconds > 0 )
		BeSlow();
	WaitForNextFrame();
	showbudget::EndFrame( bTick ? showbudget::Tick::New : showbudget::Tick::Continued );
}

bool CEngine::Simulate( float flSeconds )
{
	m_flUnsimulated = std::min( m_flUnsimulated + flSeconds, TICK_SECONDS * ( MAX_STEPS_PER_FRAME + 1 ) );
	int nSteps = 0;
	for ( ; m_flUnsimulated >= TICK_SECONDS && nSteps < MAX_STEPS_PER_FRAME; nSteps++ )
	{
		m_flUnsimulated -= TICK_SECONDS;
		StepSimulation();
	}
	return nSteps > 0;
}

void CEngine::StepSimulation()
{
	m_nTick++;
	CauseTrouble();
	m_Physics.Step( TICK_SECONDS );
	m_Scripting.Step( TICK_SECONDS );
}

// Now and then something happens that makes a frame stand out.
void CEngine::CauseTrouble()
{
	if ( m_nTick % EXPLOSION_TICKS == 0 )
	{
		const float flExtent = m_Physics.Extent() * 0.6f;
		const Vector centre{ m_Random.Between( -flExtent, flExtent ), 0.5f, m_Random.Between( -flExtent, flExtent ) };
		m_Physics.Explode( centre, 40.0f );
		m_Particles.Emit( centre, 9000 );
		showbudget::PrintFormat( showbudget::Severity::Message, "Explosion at %.1f, %.1f.",
			static_cast<double>( centre.x ), static_cast<double>( centre.z ) );
	}
	if ( m_nTick % HITCH_TICKS == 0 )
	{
		m_Streaming.LoadEverything();
		showbudget::Print( showbudget::Severity::Warning, "The camera jumped; everything was loaded in one frame." );
	}
}

void CEngine::DrawFrame()
{
	const float flDistance = m_Physics.Extent() * 1.6f;
	const Camera camera = LookAt( { std::sin( m_flTime * 0.2f ) * flDistance, 6.0f + 2.0f * std::sin( m_flTime * 0.5f ),
									  std::cos( m_flTime * 0.2f ) * flDistance },
		{ 0.0f, 1.0f, 0.0f } );
	const auto &items =
		m_Visibility.Choose( m_Physics, camera, std::clamp( m_flUnsimulated / TICK_SECONDS, 0.0f, 1.0f ) );
	m_Renderer.Draw( items, m_Particles, camera );
	m_PostProcess.Apply( m_Renderer.Picture() );
}

void CEngine::WaitForNextFrame()
{
	SHOWBUDGET_SCOPE( g_Idle, "Wait for next frame" );
	const Time now = Clock::now();
	if ( now > m_NextFrame )
		m_NextFrame = now; // too late: do not hurry afterwards
	else
		std::this_thread::sleep_until( m_NextFrame );
	m_NextFrame += FRAME_TIME;
}

void CEngine::BeSlow()
{
	SHOWBUDGET_SCOPE( g_Scripting, "Slow on command" );
	const Time end = Clock::now() + std::chrono::milliseconds( m_nSlowMilliseconds );
	m_nSlowMilliseconds = 0;
	while ( Clock::now() < end )
		m_Random.Next();
}

void CEngine::RegisterCommands()
{
	showbudget::RegisterCommand( "bodies", "NUMBER: how many bodies the physics simulates", OnBodies, this );
	showbudget::RegisterCommand( "slow", "MILLISECONDS: makes one frame that much longer", OnSlow, this );
	showbudget::RegisterCommand( "explode", "throws the bodies about", OnExplode, this );
	showbudget::RegisterCommand( "status", "what the engine is doing", OnStatus, this );
}

void CEngine::OnBodies( int nArguments, const char *const *ppArguments, void *pEngine )
{
	auto &engine = *static_cast<CEngine *>( pEngine );
	uint32_t nBodies = 0;
	if ( nArguments != 2 || !ParseNumber( ppArguments[1], CPhysics::MAX_BODIES, nBodies ) )
	{
		showbudget::PrintFormat( showbudget::Severity::Warning, "bodies takes a number from 0 to %u; there are %u.",
			CPhysics::MAX_BODIES, engine.m_Physics.BodyCount() );
		return;
	}
	engine.m_Physics.SetBodyCount( nBodies );
	showbudget::PrintFormat( showbudget::Severity::Message, "%u bodies.", nBodies );
}

void CEngine::OnSlow( int nArguments, const char *const *ppArguments, void *pEngine )
{
	auto &engine = *static_cast<CEngine *>( pEngine );
	if ( nArguments != 2 || !ParseNumber( ppArguments[1], MAX_SLOW_MILLISECONDS, engine.m_nSlowMilliseconds ) )
		showbudget::PrintFormat(
			showbudget::Severity::Warning, "slow takes milliseconds from 0 to %u.", MAX_SLOW_MILLISECONDS );
}

void CEngine::OnExplode( int, const char *const *, void *pEngine )
{
	auto &engine = *static_cast<CEngine *>( pEngine );
	engine.m_Physics.Explode( { 0.0f, 0.5f, 0.0f }, 40.0f );
	engine.m_Particles.Emit( { 0.0f, 0.5f, 0.0f }, 9000 );
}

void CEngine::OnStatus( int, const char *const *, void *pEngine )
{
	const auto &engine = *static_cast<CEngine *>( pEngine );
	showbudget::PrintFormat( showbudget::Severity::Message,
		"%u bodies, %zu particles, %u agents that see %.1f others each, characters up to %.1f high, "
		"loudest sample %.2f, %u broken blocks.",
		engine.m_Physics.BodyCount(), engine.m_Particles.Particles().size(), CScripting::AGENTS,
		static_cast<double>( engine.m_Scripting.MeanNeighbours() ), static_cast<double>( engine.m_Animation.Top() ),
		static_cast<double>( engine.m_Audio.Peak() ), engine.m_Streaming.Broken() );
}

bool CEngine::WritePicture( const char *pFile ) const
{
	std::ofstream file( pFile, std::ios::binary );
	file << "P6\n" << CRenderer::WIDTH << ' ' << CRenderer::HEIGHT << "\n255\n";
	for ( const uint32_t nPixel : m_PostProcess.Screen() )
		for ( const int nShift : { 0, 8, 16 } )
			file.put( static_cast<char>( nPixel >> nShift & 0xFF ) );
	file.close();
	return !file.fail();
}
} // namespace demo
