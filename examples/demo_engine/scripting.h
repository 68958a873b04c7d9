// Agents on a map: each runs a small program on a byte-code interpreter, asks for paths, and steers along them.
#pragma once

#include <cstdint>
#include <vector>

#include "mathtypes.h"

namespace demo
{
class CScripting
{
public:
	CScripting();

	void Step( float flSeconds );

	static constexpr uint32_t AGENTS = 400;
	// How many others an agent saw in the last step, on average.
	float MeanNeighbours() const;

private:
	static constexpr int MAP_SIZE = 96;
	static constexpr uint32_t VARIABLES = 8;

	enum class Operation : uint8_t
	{
		SetConstant,
		Listen,
		Add,
		Multiply,
		Modulo,
		JumpIfLess,
		AskForPath,
		Shout,
		End
	};
	struct Instruction
	{
		Operation m_Operation;
		uint8_t m_nTo;
		uint8_t m_nFrom;
		int16_t m_nValue;
	};
	struct Agent
	{
		Vector m_Position;
		std::vector<int> m_Path; // cells, the next one last
		int32_t m_Variables[VARIABLES]{};
		int32_t m_nHeard = 0; // the last word
		uint32_t m_nNeighbours = 0;
	};
	struct Shout
	{
		uint32_t m_nAgent;
		int32_t m_nWord;
	};

	void MakeMap();
	void MakeProgram();
	void Look();
	void RunPrograms();
	void Interpret( uint32_t nAgent );
	void DeliverShouts();
	void FindPaths();
	void FindPath( Agent &agent );
	void Steer( float flSeconds );
	static int CellOf( const Vector &position );

	CRandom m_Random{ 11 };
	std::vector<uint8_t> m_Walls; // by cell
	std::vector<Instruction> m_Program;
	std::vector<Agent> m_Agents;
	std::vector<uint32_t> m_PathsWanted; // agents
	std::vector<Shout> m_Shouts;
	std::vector<int> m_CameFrom; // of a search, by cell
	std::vector<int> m_Costs;
	std::vector<uint64_t> m_Open; // a heap of cost and cell
};
} // namespace demo
