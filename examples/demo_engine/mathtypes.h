// The little linear algebra and chance that the demo needs.
#pragma once

#include <cmath>
#include <cstdint>

namespace demo
{
struct Vector
{
	float x = 0.0f;
	float y = 0.0f;
	float z = 0.0f;

	Vector &operator+=( const Vector &v )
	{
		x += v.x;
		y += v.y;
		z += v.z;
		return *this;
	}
	Vector &operator-=( const Vector &v )
	{
		x -= v.x;
		y -= v.y;
		z -= v.z;
		return *this;
	}
};

inline Vector operator+( Vector a, const Vector &b )
{
	return a += b;
}
inline Vector operator-( Vector a, const Vector &b )
{
	return a -= b;
}
inline Vector operator*( const Vector &v, float flScale )
{
	return { v.x * flScale, v.y * flScale, v.z * flScale };
}
inline float Dot( const Vector &a, const Vector &b )
{
	return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline Vector Cross( const Vector &a, const Vector &b )
{
	return { a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x };
}
inline float Length( const Vector &v )
{
	return std::sqrt( Dot( v, v ) );
}
inline Vector Normalised( const Vector &v )
{
	const float flLength = Length( v );
	return flLength > 0.0f ? v * ( 1.0f / flLength ) : Vector{ 0.0f, 1.0f, 0.0f };
}
inline Vector Mix( const Vector &a, const Vector &b, float flPart )
{
	return a + ( b - a ) * flPart;
}

// The same numbers in every run, so that two runs can be compared.
class CRandom
{
public:
	explicit CRandom( uint32_t nSeed )
		: m_nState( nSeed ? nSeed : 1 )
	{
	}

	uint32_t Next()
	{
		m_nState ^= m_nState << 13;
		m_nState ^= m_nState >> 17;
		m_nState ^= m_nState << 5;
		return m_nState;
	}
	uint32_t Below( uint32_t nLimit ) { return Next() % nLimit; }
	float Between( float flLow, float flHigh )
	{
		return flLow + ( flHigh - flLow ) * static_cast<float>( Next() >> 8 ) * ( 1.0f / 16777216.0f );
	}

private:
	uint32_t m_nState;
};
} // namespace demo
