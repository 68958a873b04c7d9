// Chooses what of the world is drawn, how finely, and in which order.
#pragma once

#include <vector>

#include "physics.h"
#include "scene.h"

namespace demo
{
struct DrawItem
{
	Ball m_Ball;
	float m_flDepth = 0.0f;
	uint32_t m_nDetail = 0; // 0 is the finest
};

class CVisibility
{
public:
	// flPart is how far the drawn moment lies between the last two steps of the physics, 0 to 1.
	const std::vector<DrawItem> &Choose( const CPhysics &physics, const Camera &camera, float flPart );

private:
	void Interpolate( const CPhysics &physics, float flPart );
	void CullOutside( const Camera &camera );
	void CullHidden();
	void ChooseDetail();
	void Sort();

	std::vector<Ball> m_Balls;
	std::vector<DrawItem> m_Items;
	std::vector<float> m_Occluders; // nearest depth of what covers a tile of the screen
};
} // namespace demo
