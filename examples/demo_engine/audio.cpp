#define SHOWBUDGET_PROJECT "audio"
#include "audio.h"

#include <algorithm>

#include "budgets.h"

namespace demo
{
CAudio::CAudio()
	: m_Echo( ECHO, 0.0f )
{
	for ( Voice &voice : m_Voices )
	{
		voice.m_flStep = m_Random.Between( 80.0f, 1200.0f ) / static_cast<float>( SAMPLE_RATE );
		voice.m_flCutoff = m_Random.Between( 0.02f, 0.3f );
		voice.m_flLoudness = m_Random.Between( 0.01f, 0.05f );
		voice.m_flSide = m_Random.Between( 0.0f, 1.0f );
	}
}

void CAudio::Mix( float flSeconds, float flBusy )
{
	SHOWBUDGET_SCOPE( g_Audio, "Audio mix" );
	m_flPending += flSeconds * static_cast<float>( SAMPLE_RATE );
	const size_t nSamples = std::min<size_t>( static_cast<size_t>( m_flPending ), MAX_SAMPLES );
	m_flPending = std::min( m_flPending - static_cast<float>( nSamples ), 1.0f );
	m_Left.assign( nSamples, 0.0f );
	m_Right.assign( nSamples, 0.0f );
	ChooseVoices( flBusy );
	{
		SHOWBUDGET_SCOPE( g_Audio, "Voices" );
		for ( const uint32_t nVoice : m_Playing )
			MixVoice( m_Voices[nVoice], nSamples );
	}
	AddEcho( nSamples );
	Limit( nSamples );
}

void CAudio::ChooseVoices( float flBusy )
{
	SHOWBUDGET_SCOPE( g_Audio, "Choose voices" );
	m_Playing.clear();
	for ( uint32_t i = 0; i < static_cast<uint32_t>( flBusy * static_cast<float>( VOICES ) ); i++ )
		m_Playing.push_back( i );
	std::ranges::sort(
		m_Playing, [this]( uint32_t a, uint32_t b ) { return m_Voices[a].m_flLoudness > m_Voices[b].m_flLoudness; } );
}

void CAudio::MixVoice( Voice &voice, size_t nSamples )
{
	SHOWBUDGET_SCOPE( g_Audio, "Voice" );
	m_Mono.resize( nSamples );
	{
		SHOWBUDGET_SCOPE( g_Audio, "Oscillator" );
		for ( float &flSample : m_Mono )
		{
			voice.m_flPhase += voice.m_flStep;
			voice.m_flPhase -= static_cast<float>( voice.m_flPhase >= 1.0f );
			flSample = 2.0f * voice.m_flPhase - 1.0f;
		}
	}
	{
		SHOWBUDGET_SCOPE( g_Audio, "Filter" );
		for ( float &flSample : m_Mono )
			flSample = voice.m_flFilter += ( flSample - voice.m_flFilter ) * voice.m_flCutoff;
	}
	for ( size_t i = 0; i < nSamples; i++ )
	{
		m_Left[i] += m_Mono[i] * voice.m_flLoudness * ( 1.0f - voice.m_flSide );
		m_Right[i] += m_Mono[i] * voice.m_flLoudness * voice.m_flSide;
	}
}

void CAudio::AddEcho( size_t nSamples )
{
	SHOWBUDGET_SCOPE( g_Audio, "Echo" );
	for ( size_t i = 0; i < nSamples; i++ )
	{
		float &flEcho = m_Echo[m_nEchoAt];
		m_nEchoAt = ( m_nEchoAt + 1 ) % ECHO;
		const float flOld = flEcho;
		flEcho = 0.5f * ( m_Left[i] + m_Right[i] ) + 0.4f * flOld;
		m_Left[i] += 0.3f * flOld;
		m_Right[i] += 0.3f * flOld;
	}
}

void CAudio::Limit( size_t nSamples )
{
	SHOWBUDGET_SCOPE( g_Audio, "Limiter" );
	for ( size_t i = 0; i < nSamples; i++ )
	{
		const float flLoudest = std::max( std::abs( m_Left[i] ), std::abs( m_Right[i] ) ) * m_flGain;
		m_flGain = flLoudest > 0.95f ? m_flGain * 0.95f / flLoudest : std::min( 1.0f, m_flGain * 1.00002f );
		m_Left[i] *= m_flGain;
		m_Right[i] *= m_flGain;
		m_flPeak = std::max( m_flPeak, flLoudest );
	}
}
} // namespace demo
