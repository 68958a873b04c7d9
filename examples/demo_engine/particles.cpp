#define SHOWBUDGET_PROJECT "renderer"
#include "particles.h"

#include <algorithm>

#include "budgets.h"

namespace demo
{
void CParticles::Emit( const Vector &centre, uint32_t nCount )
{
	SHOWBUDGET_SCOPE( g_Particles, "Emit" );
	const size_t nRoom = MAX_PARTICLES - m_Particles.size();
	for ( size_t i = 0; i < std::min<size_t>( nCount, nRoom ); i++ )
	{
		const Vector direction = Normalised(
			{ m_Random.Between( -1.0f, 1.0f ), m_Random.Between( 0.0f, 1.5f ), m_Random.Between( -1.0f, 1.0f ) } );
		m_Particles.push_back(
			{ centre, direction * m_Random.Between( 2.0f, 12.0f ), m_Random.Between( 0.5f, 1.0f ) } );
	}
}

void CParticles::Update( float flSeconds )
{
	SHOWBUDGET_SCOPE( g_Particles, "Particles" );
	{
		SHOWBUDGET_SCOPE( g_Particles, "Move particles" );
		for ( Particle &particle : m_Particles )
		{
			particle.m_Velocity.y -= 9.81f * flSeconds;
			particle.m_Position += particle.m_Velocity * flSeconds;
			particle.m_flLife -= 0.4f * flSeconds;
		}
	}
	{
		SHOWBUDGET_SCOPE( g_Particles, "Bounce particles" );
		for ( Particle &particle : m_Particles )
		{
			if ( particle.m_Position.y < 0.0f )
			{
				particle.m_Position.y = -particle.m_Position.y;
				particle.m_Velocity = particle.m_Velocity * 0.6f;
				particle.m_Velocity.y = std::abs( particle.m_Velocity.y );
			}
		}
	}
	{
		SHOWBUDGET_SCOPE( g_Particles, "Remove burnt out" );
		std::erase_if( m_Particles, []( const Particle &particle ) { return particle.m_flLife <= 0.0f; } );
	}
}
} // namespace demo
