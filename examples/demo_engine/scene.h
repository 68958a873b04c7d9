// What the renderer draws: balls, particles and the camera that looks at them.
#pragma once

#include <cstdint>
#include <vector>

#include "mathtypes.h"

namespace demo
{
struct Ball
{
	Vector m_Position;
	float m_flRadius = 0.0f;
	uint32_t m_nColour = 0;
};

struct Camera
{
	Vector m_Position;
	Vector m_Right;
	Vector m_Up;
	Vector m_Forward;

	// x and y to the right and up, z away from the camera.
	Vector ToView( const Vector &point ) const
	{
		const Vector offset = point - m_Position;
		return { Dot( offset, m_Right ), Dot( offset, m_Up ), Dot( offset, m_Forward ) };
	}
};

inline Camera LookAt( const Vector &from, const Vector &to )
{
	Camera camera;
	camera.m_Position = from;
	camera.m_Forward = Normalised( to - from );
	camera.m_Right = Normalised( Cross( Vector{ 0.0f, 1.0f, 0.0f }, camera.m_Forward ) );
	camera.m_Up = Cross( camera.m_Forward, camera.m_Right );
	return camera;
}
} // namespace demo
