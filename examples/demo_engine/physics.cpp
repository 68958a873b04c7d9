#define SHOWBUDGET_PROJECT "simulation"
#include "physics.h"

#include <algorithm>

#include "budgets.h"

namespace demo
{
namespace
{
constexpr float GRAVITY = -9.81f;
constexpr float CELL_SIZE = 1.3f; // at least the largest diameter
constexpr float HEIGHT = 12.0f;
constexpr int SOLVER_ITERATIONS = 8;
} // namespace

CPhysics::CPhysics( uint32_t nBodies )
{
	SetBodyCount( nBodies );
}

void CPhysics::SetBodyCount( uint32_t nBodies )
{
	nBodies = std::min( nBodies, MAX_BODIES );
	m_flExtent = std::max( 6.0f, std::sqrt( static_cast<float>( nBodies ) ) * 0.28f );
	m_nCellsPerSide = static_cast<int>( 2.0f * m_flExtent / CELL_SIZE ) + 1;
	while ( m_Bodies.size() > nBodies )
		m_Bodies.pop_back();
	while ( m_Bodies.size() < nBodies )
	{
		Body body;
		body.m_Position = { m_Random.Between( -m_flExtent, m_flExtent ), m_Random.Between( 0.5f, HEIGHT ),
			m_Random.Between( -m_flExtent, m_flExtent ) };
		body.m_PositionBefore = body.m_Position;
		body.m_flRadius = m_Random.Between( 0.3f, 0.6f );
		body.m_nColour = m_Random.Next();
		m_Bodies.push_back( body );
	}
}

void CPhysics::Step( float flSeconds )
{
	SHOWBUDGET_SCOPE( g_Physics, "Physics step" );
	ApplyForces( flSeconds );
	FindPairs();
	FindContacts();
	SolveContacts( flSeconds );
	Move( flSeconds );
	KeepInBox();
}

void CPhysics::Explode( const Vector &centre, float flStrength )
{
	SHOWBUDGET_SCOPE( g_Physics, "Explosion" );
	for ( Body &body : m_Bodies )
	{
		const Vector offset = body.m_Position - centre;
		const float flDistance = Length( offset );
		if ( flDistance < 8.0f )
			body.m_Velocity +=
				( Normalised( offset ) + Vector{ 0.0f, 0.7f, 0.0f } ) * ( flStrength / ( 1.0f + flDistance ) );
	}
}

void CPhysics::ApplyForces( float flSeconds )
{
	SHOWBUDGET_SCOPE( g_Physics, "Apply forces" );
	const float flDamping = 1.0f - 0.15f * flSeconds;
	for ( Body &body : m_Bodies )
	{
		body.m_Velocity.y += GRAVITY * flSeconds;
		body.m_Velocity = body.m_Velocity * flDamping;
	}
}

uint32_t CPhysics::CellOf( const Vector &position ) const
{
	const auto Index = [this]( float flCoordinate )
	{ return std::clamp( static_cast<int>( ( flCoordinate + m_flExtent ) / CELL_SIZE ), 0, m_nCellsPerSide - 1 ); };
	return static_cast<uint32_t>( Index( position.z ) * m_nCellsPerSide + Index( position.x ) );
}

void CPhysics::FindPairs()
{
	SHOWBUDGET_SCOPE( g_Physics, "Broad phase" );
	SortIntoCells();
	PairNeighbours();
}

// A counting sort.
void CPhysics::SortIntoCells()
{
	SHOWBUDGET_SCOPE( g_Physics, "Sort into cells" );
	const size_t nCells = static_cast<size_t>( m_nCellsPerSide ) * static_cast<size_t>( m_nCellsPerSide );
	m_Cells.resize( m_Bodies.size() );
	m_CellStarts.assign( nCells + 1, 0 );
	m_SortedBodies.resize( m_Bodies.size() );
	{
		SHOWBUDGET_SCOPE( g_Physics, "Count cells" );
		for ( size_t i = 0; i < m_Bodies.size(); i++ )
		{
			m_Cells[i] = CellOf( m_Bodies[i].m_Position );
			m_CellStarts[m_Cells[i]]++;
		}
	}
	uint32_t nEnd = 0;
	for ( uint32_t &nStart : m_CellStarts )
		nStart = nEnd += nStart;
	for ( size_t i = m_Bodies.size(); i-- > 0; )
		m_SortedBodies[--m_CellStarts[m_Cells[i]]] = static_cast<uint32_t>( i );
}

void CPhysics::PairNeighbours()
{
	SHOWBUDGET_SCOPE( g_Physics, "Pair neighbours" );
	// Half of the neighbours; the other half sees this cell.
	constexpr int NEIGHBOURS[4][2] = { { 1, 0 }, { -1, 1 }, { 0, 1 }, { 1, 1 } };
	m_Pairs.clear();
	const auto PairWith = [this]( uint32_t nBody, uint32_t nFrom, uint32_t nEnd )
	{
		for ( uint32_t i = nFrom; i < nEnd; i++ )
		{
			const uint32_t nOther = m_SortedBodies[i];
			if ( std::abs( m_Bodies[nBody].m_Position.y - m_Bodies[nOther].m_Position.y ) < CELL_SIZE )
				m_Pairs.emplace_back( nBody, nOther );
		}
	};
	for ( int nRow = 0; nRow < m_nCellsPerSide; nRow++ )
	{
		for ( int nColumn = 0; nColumn < m_nCellsPerSide; nColumn++ )
		{
			const auto nCell = static_cast<uint32_t>( nRow * m_nCellsPerSide + nColumn );
			for ( uint32_t i = m_CellStarts[nCell]; i < m_CellStarts[nCell + 1]; i++ )
			{
				PairWith( m_SortedBodies[i], i + 1, m_CellStarts[nCell + 1] );
				for ( const auto &neighbour : NEIGHBOURS )
				{
					const int nOtherColumn = nColumn + neighbour[0];
					const int nOtherRow = nRow + neighbour[1];
					if ( nOtherColumn < 0 || nOtherColumn >= m_nCellsPerSide || nOtherRow >= m_nCellsPerSide )
						continue;
					const auto nOther = static_cast<uint32_t>( nOtherRow * m_nCellsPerSide + nOtherColumn );
					PairWith( m_SortedBodies[i], m_CellStarts[nOther], m_CellStarts[nOther + 1] );
				}
			}
		}
	}
}

void CPhysics::FindContacts()
{
	SHOWBUDGET_SCOPE( g_Physics, "Narrow phase" );
	m_Contacts.clear();
	for ( const auto &[nFirst, nSecond] : m_Pairs )
	{
		const Vector offset = m_Bodies[nSecond].m_Position - m_Bodies[nFirst].m_Position;
		const float flReach = m_Bodies[nFirst].m_flRadius + m_Bodies[nSecond].m_flRadius;
		const float flSquared = Dot( offset, offset );
		if ( flSquared >= flReach * flReach )
			continue;
		m_Contacts.push_back( { nFirst, nSecond, Normalised( offset ), flReach - std::sqrt( flSquared ), 0.0f } );
	}
}

void CPhysics::SolveContacts( float flSeconds )
{
	SHOWBUDGET_SCOPE( g_Physics, "Solve contacts" );
	const float flPush = 0.2f / flSeconds;
	for ( int i = 0; i < SOLVER_ITERATIONS; i++ )
		SolveOnce( flPush );
}

void CPhysics::SolveOnce( float flPush )
{
	SHOWBUDGET_SCOPE( g_Physics, "Solver iteration" );
	for ( Contact &contact : m_Contacts )
	{
		Body &first = m_Bodies[contact.m_nFirst];
		Body &second = m_Bodies[contact.m_nSecond];
		const float flApproach = Dot( second.m_Velocity - first.m_Velocity, contact.m_Normal );
		const float flWanted = flPush * std::max( 0.0f, contact.m_flDepth - 0.02f ) - flApproach;
		// The sum of all impulses of a contact may only push, a single one may also take back.
		const float flImpulse = std::max( 0.0f, contact.m_flImpulse + 0.5f * flWanted );
		const Vector change = contact.m_Normal * ( flImpulse - contact.m_flImpulse );
		contact.m_flImpulse = flImpulse;
		first.m_Velocity -= change;
		second.m_Velocity += change;
	}
}

void CPhysics::Move( float flSeconds )
{
	SHOWBUDGET_SCOPE( g_Physics, "Move bodies" );
	for ( Body &body : m_Bodies )
	{
		body.m_PositionBefore = body.m_Position;
		body.m_Position += body.m_Velocity * flSeconds;
	}
}

void CPhysics::KeepInBox()
{
	SHOWBUDGET_SCOPE( g_Physics, "Keep in box" );
	const auto Bounce = []( float &flPosition, float &flVelocity, float flLow, float flHigh )
	{
		if ( flPosition < flLow )
		{
			flPosition = flLow;
			flVelocity = std::abs( flVelocity ) * 0.4f;
		}
		else if ( flPosition > flHigh )
		{
			flPosition = flHigh;
			flVelocity = -std::abs( flVelocity ) * 0.4f;
		}
	};
	for ( Body &body : m_Bodies )
	{
		Bounce( body.m_Position.x, body.m_Velocity.x, -m_flExtent, m_flExtent );
		Bounce( body.m_Position.y, body.m_Velocity.y, body.m_flRadius, 3.0f * HEIGHT );
		Bounce( body.m_Position.z, body.m_Velocity.z, -m_flExtent, m_flExtent );
	}
}
} // namespace demo
