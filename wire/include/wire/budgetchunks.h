// 'PCAT' and 'PCPU': the budgets of an engine and their times in one frame. Numbers are big-endian.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "wire/chunks.h"

namespace wire
{
// 'PCAT': u32 count, then per budget char[64] name (terminated inside), u8 red, green, blue, unused.
constexpr size_t CATEGORY_RECORD_SIZE = 68;
constexpr size_t CATEGORY_NAME_SIZE = 64;

struct Category
{
	std::string_view m_Name; // up to its terminator, or all 64 bytes where there is none
	uint8_t m_nRed = 0;
	uint8_t m_nGreen = 0;
	uint8_t m_nBlue = 0;
};

enum class CountProblem
{
	None,
	NoCount,    // the payload is too short to hold its count (and what stands before the values)
	DoesNotFit, // the count's records reach past the payload
	TooMany     // more than MAX_CATEGORIES categories; a sample may hold more values than anyone reads
};

// A payload as it lies in memory, which must outlive the view. Bytes behind the last record are ignored.
class CCategoriesView
{
public:
	explicit CCategoriesView( std::span<const uint8_t> payload );

	CountProblem Problem() const { return m_Problem; }
	uint32_t Count() const { return m_nCount; }   // as declared; 0 when NoCount
	Category operator[]( uint32_t nIndex ) const; // only without a problem, nIndex < Count()

private:
	std::span<const uint8_t> m_Payload;
	uint32_t m_nCount = 0;
	CountProblem m_Problem = CountProblem::None;
};

size_t CategoriesSize( uint32_t nCount ); // payload bytes; nCount <= MAX_CATEGORIES
// Writes the payload; names longer than 63 bytes are cut at a UTF-8 boundary. Returns the bytes written, 0 when `out`
// is too small.
size_t WriteCategories( std::span<uint8_t> out, std::span<const Category> categories );

// 'PCPU': u32 count, u32 continuation mark (only zero or not counts), f32 averaged frame rate, then u32 microseconds
// per budget.
class CSampleView
{
public:
	explicit CSampleView( std::span<const uint8_t> payload );

	CountProblem Problem() const { return m_Problem; }
	uint32_t Count() const { return m_nCount; }
	bool IsContinuation() const { return m_bContinuation; } // the mark is 0
	float FrameRate() const { return m_flFrameRate; }       // as sent: may be anything
	uint32_t Value( uint32_t nIndex ) const;                // microseconds; only without a problem, nIndex < Count()
	void CopyValues( std::span<uint32_t> out ) const;       // the first out.size() values; out.size() <= Count()

private:
	std::span<const uint8_t> m_Payload;
	uint32_t m_nCount = 0;
	bool m_bContinuation = false;
	float m_flFrameRate = 0.0f;
	CountProblem m_Problem = CountProblem::None;
};

size_t SampleSize( uint32_t nCount ); // payload bytes
size_t WriteSample( std::span<uint8_t> out, bool bContinuation, float flFrameRate, std::span<const uint32_t> values );
} // namespace wire
