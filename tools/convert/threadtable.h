// The threads of an input: how they are named, and what phase one learns of each.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "tools/convert/traceevent.h"

namespace convert
{
struct Thread
{
	std::string m_Process; // ids as the input writes them
	std::string m_Id;
	std::string m_Name; // empty when the input names it nowhere

	uint64_t m_nScopes = 0; // events that begin a scope, and samples
	uint64_t m_nSamples = 0;
	int64_t m_nFirstTime = INT64_MAX;
	int64_t m_nLastTime = INT64_MIN;

	// Of two scopes with the same begin and end the first one written is the outer one, unless the input writes scopes
	// when they end.
	bool WritesAtEnd() const { return m_nWrittenAtEnd > m_nWrittenAtBegin; }
	uint64_t m_nWrittenAtBegin = 0;
	uint64_t m_nWrittenAtEnd = 0;

	// The latest event, to see what is out of order.
	int64_t m_nLastBeginOrEnd = INT64_MIN;
	int64_t m_nLastComplete = INT64_MIN;
	int64_t m_nLastCompleteEnd = INT64_MIN;
};

class CThreadTable
{
public:
	static constexpr size_t MAX_THREADS = 1u << 16; // all that come later share the last one

	uint32_t Find( std::string_view process, std::string_view thread ); // adds it when it is new
	void NameProcess( std::string_view process, std::string_view name );

	Thread &Get( uint32_t nThread ) { return m_Threads[nThread]; }
	const Thread &Get( uint32_t nThread ) const { return m_Threads[nThread]; }
	uint32_t Count() const { return static_cast<uint32_t>( m_Threads.size() ); }
	std::string_view ProcessName( const std::string &process ) const; // empty when it has none

	// What a thread is called beside the others: "name id", with "name id: " of its process in front.
	std::string Label( uint32_t nThread, bool bWithProcess ) const;

private:
	std::vector<Thread> m_Threads;
	std::unordered_map<std::string, uint32_t> m_Index;
	std::map<std::string, std::string, std::less<>> m_ProcessNames;
	uint32_t m_nLast = 0;
	std::string m_Key; // kept for its memory
};
} // namespace convert
