// Sparks that fly, fall and fade.
#pragma once

#include <cstdint>
#include <vector>

#include "mathtypes.h"

namespace demo
{
struct Particle
{
	Vector m_Position;
	Vector m_Velocity;
	float m_flLife = 1.0f; // 1 to 0
};

class CParticles
{
public:
	// Sparks at one place, as many as there is room for.
	void Emit( const Vector &centre, uint32_t nCount );
	void Update( float flSeconds );
	const std::vector<Particle> &Particles() const { return m_Particles; }

private:
	static constexpr size_t MAX_PARTICLES = 30000;

	CRandom m_Random{ 23 };
	std::vector<Particle> m_Particles;
};
} // namespace demo
