#include "tools/convert/decimal.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace convert
{
static bool IsDigit( char c )
{
	return c >= '0' && c <= '9';
}

// A number as digits times a power of ten.
struct Decimal
{
	uint64_t m_nDigits = 0;
	int m_nExponent = 0;
	bool m_bNegative = false;
};

static bool ParseExponent( std::string_view text, int &nExponent )
{
	constexpr int FAR = 100'000; // nothing is that large or small
	const bool bNegative = !text.empty() && text[0] == '-';
	if ( bNegative || ( !text.empty() && text[0] == '+' ) )
		text.remove_prefix( 1 );
	if ( text.empty() || !std::all_of( text.begin(), text.end(), IsDigit ) )
		return false;
	int nValue = 0;
	for ( const char c : text )
		nValue = std::min( nValue * 10 + ( c - '0' ), FAR );
	nExponent += bNegative ? -nValue : nValue;
	return true;
}

static bool ParseDecimal( std::string_view text, Decimal &decimal )
{
	constexpr uint64_t FULL = UINT64_MAX / 10 - 1; // no room for another digit
	decimal.m_bNegative = !text.empty() && text[0] == '-';
	bool bPoint = false;
	bool bDigits = false;
	for ( size_t i = decimal.m_bNegative; i < text.size(); i++ )
	{
		const char c = text[i];
		if ( IsDigit( c ) )
		{
			bDigits = true;
			const bool bKept = decimal.m_nDigits < FULL;
			if ( bKept )
				decimal.m_nDigits = decimal.m_nDigits * 10 + static_cast<uint64_t>( c - '0' );
			decimal.m_nExponent += static_cast<int>( !bKept ) - static_cast<int>( bPoint );
		}
		else if ( c == '.' && !bPoint )
			bPoint = true;
		else
			return bDigits && ( c == 'e' || c == 'E' ) && ParseExponent( text.substr( i + 1 ), decimal.m_nExponent );
	}
	return bDigits;
}

static bool Scale( uint64_t &nValue, int nExponent )
{
	for ( ; nExponent > 0; nExponent-- )
		if ( __builtin_mul_overflow( nValue, uint64_t{ 10 }, &nValue ) )
			return false;
	bool bUp = false; // what was cut off last is a half or more
	for ( ; nExponent < 0 && ( nValue > 0 || bUp ); nExponent++ )
	{
		bUp = nValue % 10 >= 5;
		nValue /= 10;
	}
	nValue += bUp;
	return nValue <= static_cast<uint64_t>( INT64_MAX );
}

std::optional<int64_t> ParseTime( std::string_view text, int nUnit )
{
	Decimal decimal;
	if ( !ParseDecimal( text, decimal ) )
		return {};
	uint64_t nValue = decimal.m_nDigits;
	if ( nValue > 0 && !Scale( nValue, decimal.m_nExponent + nUnit ) )
		return {};
	const int64_t nTime = static_cast<int64_t>( nValue );
	return decimal.m_bNegative ? -nTime : nTime;
}

std::optional<double> ParseNumber( std::string_view text )
{
	double flValue = 0;
	const auto result = std::from_chars( text.data(), text.data() + text.size(), flValue );
	if ( result.ec != std::errc() || result.ptr != text.data() + text.size() || !std::isfinite( flValue ) )
		return {};
	return flValue;
}
} // namespace convert
