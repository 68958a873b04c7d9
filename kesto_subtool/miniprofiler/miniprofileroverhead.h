// What profiling itself costs: the engine's service times of the newest intervals, and the sizes of its chunks.
#pragma once

#include <array>
#include <cstdint>

class CMiniProfilerCostHistory
{
public:
	static constexpr uint32_t CAPACITY = 64;

	void Push( uint64_t nTicks );
	uint32_t Count() const { return m_nCount; }
	uint64_t At( uint32_t nAge ) const { return m_Ticks[( m_nHead + nAge ) % CAPACITY]; } // 0 is the newest

private:
	std::array<uint64_t, CAPACITY> m_Ticks{};
	uint32_t m_nHead = 0;
	uint32_t m_nCount = 0;
};

struct MiniProfilerCounters
{
	uint32_t m_nTransmitted = 0; // scopes in the latest block of data
	uint32_t m_nRegistered = 0;  // scopes that the engine knows or looked at
	int32_t m_nNamesSent = 0;    // names in the latest block of names
	uint32_t m_nPacketSize = 0;  // bytes of the latest chunk
};
