// Payloads of budget chunks, written byte by byte as the protocol has them.
#pragma once

#include <bit>
#include <cstdint>
#include <string>
#include <vector>

struct TestCategory
{
	std::string m_Name;
	uint8_t m_nRed = 0;
	uint8_t m_nGreen = 0;
	uint8_t m_nBlue = 0;
};

using Payload = std::vector<uint8_t>;

inline void AppendBigEndian( Payload &payload, uint32_t nValue )
{
	for ( int nShift = 24; nShift >= 0; nShift -= 8 )
		payload.push_back( static_cast<uint8_t>( nValue >> nShift ) );
}

// 'PCAT': a declared count, then records of 64 name bytes, three colour bytes and one without meaning.
inline Payload CategoriesPayload( const std::vector<TestCategory> &categories )
{
	Payload payload;
	AppendBigEndian( payload, static_cast<uint32_t>( categories.size() ) );
	for ( const TestCategory &category : categories )
	{
		std::string name = category.m_Name;
		name.resize( 64, '\0' );
		payload.insert( payload.end(), name.begin(), name.end() );
		for ( const uint8_t nByte : { category.m_nRed, category.m_nGreen, category.m_nBlue, uint8_t{ 0x77 } } )
			payload.push_back( nByte );
	}
	return payload;
}

// 'PCPU': count, continuation mark, frame rate, values.
inline Payload SamplePayload( const std::vector<uint32_t> &values, float flFrameRate = 60.0f, uint32_t nMark = 1 )
{
	Payload payload;
	AppendBigEndian( payload, static_cast<uint32_t>( values.size() ) );
	AppendBigEndian( payload, nMark );
	AppendBigEndian( payload, std::bit_cast<uint32_t>( flFrameRate ) );
	for ( const uint32_t nValue : values )
		AppendBigEndian( payload, nValue );
	return payload;
}

constexpr uint32_t CHUNK_PCAT = 0x50434154;
constexpr uint32_t CHUNK_PCPU = 0x50435055;
constexpr uint32_t CHUNK_PMPF = 0x504d5046;
constexpr uint32_t CHUNK_KSTO = 0x4b53544f;
constexpr uint32_t CHUNK_KMPC = 0x4b4d5043;
