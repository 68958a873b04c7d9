#define SHOWBUDGET_PROJECT "gameplay"
#include "scripting.h"

#include <algorithm>
#include <functional>

#include "budgets.h"

namespace demo
{
namespace
{
constexpr size_t PATHS_PER_STEP = 8;
}

CScripting::CScripting()
	: m_Agents( AGENTS )
{
	MakeMap();
	MakeProgram();
	for ( Agent &agent : m_Agents )
	{
		agent.m_Position = {
			m_Random.Between( 1.0f, MAP_SIZE - 1.0f ), 0.0f, m_Random.Between( 1.0f, MAP_SIZE - 1.0f ) };
		agent.m_Variables[0] = static_cast<int32_t>( m_Random.Below( 1000 ) );
	}
}

void CScripting::MakeMap()
{
	m_Walls.assign( MAP_SIZE * MAP_SIZE, 0 );
	for ( int i = 0; i < 90; i++ )
	{
		int nCell = static_cast<int>( m_Random.Below( MAP_SIZE * MAP_SIZE ) );
		const int nStep = m_Random.Below( 2 ) ? 1 : MAP_SIZE;
		for ( int n = 0; n < 14 && nCell < MAP_SIZE * MAP_SIZE; n++, nCell += nStep )
			m_Walls[static_cast<size_t>( nCell )] = 1;
	}
}

// Thinks about what was heard in a loop, then now and then asks for a path and shouts.
void CScripting::MakeProgram()
{
	m_Program = {
		{ Operation::Listen, 5, 0, 0 },
		{ Operation::Add, 0, 5, 0 },
		{ Operation::SetConstant, 1, 0, 0 },
		{ Operation::SetConstant, 2, 0, 17 },
		{ Operation::SetConstant, 3, 0, 1 },
		{ Operation::SetConstant, 4, 0, 24 },
		{ Operation::Multiply, 0, 2, 0 },
		{ Operation::Add, 0, 3, 0 },
		{ Operation::Modulo, 0, 0, 9973 },
		{ Operation::Add, 1, 3, 0 },
		{ Operation::JumpIfLess, 1, 4, 6 },
		{ Operation::AskForPath, 0, 0, 40 },
		{ Operation::Shout, 0, 0, 25 },
		{ Operation::End, 0, 0, 0 },
	};
}

void CScripting::Step( float flSeconds )
{
	SHOWBUDGET_SCOPE( g_Scripting, "Scripting" );
	Look();
	RunPrograms();
	DeliverShouts();
	FindPaths();
	Steer( flSeconds );
}

void CScripting::Look()
{
	SHOWBUDGET_SCOPE( g_Scripting, "Look around" );
	constexpr float SIGHT = 6.0f;
	for ( Agent &agent : m_Agents )
		agent.m_nNeighbours = 0;
	for ( size_t i = 0; i < m_Agents.size(); i++ )
	{
		for ( size_t j = i + 1; j < m_Agents.size(); j++ )
		{
			const Vector offset = m_Agents[i].m_Position - m_Agents[j].m_Position;
			const uint32_t nSeen = Dot( offset, offset ) < SIGHT * SIGHT;
			m_Agents[i].m_nNeighbours += nSeen;
			m_Agents[j].m_nNeighbours += nSeen;
		}
	}
}

float CScripting::MeanNeighbours() const
{
	uint32_t nSum = 0;
	for ( const Agent &agent : m_Agents )
		nSum += agent.m_nNeighbours;
	return static_cast<float>( nSum ) / static_cast<float>( AGENTS );
}

void CScripting::RunPrograms()
{
	SHOWBUDGET_SCOPE( g_Scripting, "Run programs" );
	for ( uint32_t i = 0; i < m_Agents.size(); i++ )
		Interpret( i );
}

void CScripting::Interpret( uint32_t nAgent )
{
	SHOWBUDGET_SCOPE( g_Scripting, "Interpret" );
	Agent &agent = m_Agents[nAgent];
	int32_t *pVariables = agent.m_Variables;
	for ( size_t nAt = 0;; nAt++ )
	{
		const Instruction &instruction = m_Program[nAt];
		switch ( instruction.m_Operation )
		{
			case Operation::SetConstant:
				pVariables[instruction.m_nTo] = instruction.m_nValue;
				break;
			case Operation::Listen:
				pVariables[instruction.m_nTo] = agent.m_nHeard;
				break;
			case Operation::Add:
				pVariables[instruction.m_nTo] += pVariables[instruction.m_nFrom];
				break;
			case Operation::Multiply:
				pVariables[instruction.m_nTo] *= pVariables[instruction.m_nFrom];
				break;
			case Operation::Modulo:
				pVariables[instruction.m_nTo] %= instruction.m_nValue;
				break;
			case Operation::JumpIfLess:
				if ( pVariables[instruction.m_nTo] < pVariables[instruction.m_nFrom] )
					nAt = static_cast<size_t>( instruction.m_nValue - 1 );
				break;
			case Operation::AskForPath:
				if ( agent.m_Path.empty() || pVariables[0] % instruction.m_nValue == 0 )
					m_PathsWanted.push_back( nAgent );
				break;
			case Operation::Shout:
				if ( pVariables[0] % instruction.m_nValue == 0 )
					m_Shouts.push_back( { nAgent, pVariables[0] } );
				break;
			case Operation::End:
				return;
		}
	}
}

void CScripting::DeliverShouts()
{
	SHOWBUDGET_SCOPE( g_Scripting, "Deliver shouts" );
	for ( const Shout &shout : m_Shouts )
	{
		for ( Agent &agent : m_Agents )
		{
			const Vector offset = agent.m_Position - m_Agents[shout.m_nAgent].m_Position;
			if ( Dot( offset, offset ) < 100.0f )
				agent.m_nHeard = shout.m_nWord;
		}
	}
	m_Shouts.clear();
}

void CScripting::FindPaths()
{
	SHOWBUDGET_SCOPE( g_Scripting, "Find paths" );
	for ( size_t i = 0; i < std::min( m_PathsWanted.size(), PATHS_PER_STEP ); i++ )
		FindPath( m_Agents[m_PathsWanted[i]] );
	m_PathsWanted.clear();
}

int CScripting::CellOf( const Vector &position )
{
	const int nColumn = std::clamp( static_cast<int>( position.x ), 0, MAP_SIZE - 1 );
	return std::clamp( static_cast<int>( position.z ), 0, MAP_SIZE - 1 ) * MAP_SIZE + nColumn;
}

// A*, four ways, with the distance along the axes as the estimate. Walls may shut the goal off; the agent then stays.
void CScripting::FindPath( Agent &agent )
{
	SHOWBUDGET_SCOPE( g_Scripting, "A* search" );
	const int nStart = CellOf( agent.m_Position );
	const int nGoal = static_cast<int>( m_Random.Below( MAP_SIZE * MAP_SIZE ) );
	const auto Estimate = [nGoal]( int nCell )
	{ return std::abs( nCell % MAP_SIZE - nGoal % MAP_SIZE ) + std::abs( nCell / MAP_SIZE - nGoal / MAP_SIZE ); };
	const auto Push = [&]( int nCell )
	{
		m_Open.push_back( static_cast<uint64_t>( m_Costs[static_cast<size_t>( nCell )] + Estimate( nCell ) ) << 32 |
						  static_cast<uint64_t>( nCell ) );
		std::ranges::push_heap( m_Open, std::greater{} );
	};
	m_CameFrom.assign( m_Walls.size(), -1 );
	m_Costs.assign( m_Walls.size(), 1 << 20 );
	m_Open.clear();
	m_Costs[static_cast<size_t>( nStart )] = 0;
	Push( nStart );
	while ( !m_Open.empty() )
	{
		std::ranges::pop_heap( m_Open, std::greater{} );
		const int nCell = static_cast<int>( m_Open.back() & 0xFFFFFFFF );
		m_Open.pop_back();
		if ( nCell == nGoal )
			break;
		const int nColumn = nCell % MAP_SIZE;
		const int neighbours[4] = {
			nColumn > 0 ? nCell - 1 : -1, nColumn < MAP_SIZE - 1 ? nCell + 1 : -1, nCell - MAP_SIZE, nCell + MAP_SIZE };
		for ( const int nNext : neighbours )
		{
			if ( nNext < 0 || nNext >= MAP_SIZE * MAP_SIZE || m_Walls[static_cast<size_t>( nNext )] )
				continue;
			const int nCost = m_Costs[static_cast<size_t>( nCell )] + 1;
			if ( nCost >= m_Costs[static_cast<size_t>( nNext )] )
				continue;
			m_Costs[static_cast<size_t>( nNext )] = nCost;
			m_CameFrom[static_cast<size_t>( nNext )] = nCell;
			Push( nNext );
		}
	}
	agent.m_Path.clear();
	if ( m_CameFrom[static_cast<size_t>( nGoal )] < 0 )
		return;
	for ( int nCell = nGoal; nCell != nStart; nCell = m_CameFrom[static_cast<size_t>( nCell )] )
		agent.m_Path.push_back( nCell );
}

void CScripting::Steer( float flSeconds )
{
	SHOWBUDGET_SCOPE( g_Scripting, "Steer" );
	constexpr float SPEED = 4.0f;
	for ( Agent &agent : m_Agents )
	{
		if ( agent.m_Path.empty() )
			continue;
		const int nCell = agent.m_Path.back();
		const Vector next{
			static_cast<float>( nCell % MAP_SIZE ) + 0.5f, 0.0f, static_cast<float>( nCell / MAP_SIZE ) + 0.5f };
		const Vector way = next - agent.m_Position;
		if ( Length( way ) < SPEED * flSeconds )
			agent.m_Path.pop_back();
		agent.m_Position += Normalised( way ) * ( SPEED * flSeconds );
	}
}
} // namespace demo
