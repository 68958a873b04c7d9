// Balls in a box: a grid finds the pairs that may touch, a sequential solver pushes them apart.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "mathtypes.h"

namespace demo
{
struct Body
{
	Vector m_Position;
	Vector m_PositionBefore; // at the step before, to draw what lies between
	Vector m_Velocity;
	float m_flRadius = 0.5f;
	uint32_t m_nColour = 0;
};

class CPhysics
{
public:
	static constexpr uint32_t MAX_BODIES = 20000;

	explicit CPhysics( uint32_t nBodies );

	void SetBodyCount( uint32_t nBodies );
	uint32_t BodyCount() const { return static_cast<uint32_t>( m_Bodies.size() ); }
	const std::vector<Body> &Bodies() const { return m_Bodies; }
	// Half of the box's width; it grows with the number of bodies.
	float Extent() const { return m_flExtent; }

	void Step( float flSeconds );
	// Throws everything near the point away from it.
	void Explode( const Vector &centre, float flStrength );

private:
	struct Contact
	{
		uint32_t m_nFirst;
		uint32_t m_nSecond;
		Vector m_Normal; // from the first to the second
		float m_flDepth;
		float m_flImpulse;
	};

	void ApplyForces( float flSeconds );
	void FindPairs();
	void SortIntoCells();
	void PairNeighbours();
	void FindContacts();
	void SolveContacts( float flSeconds );
	void SolveOnce( float flPush );
	void Move( float flSeconds );
	void KeepInBox();
	uint32_t CellOf( const Vector &position ) const;

	CRandom m_Random{ 1 };
	float m_flExtent = 10.0f;
	int m_nCellsPerSide = 1;
	std::vector<Body> m_Bodies;
	std::vector<uint32_t> m_Cells;      // by body
	std::vector<uint32_t> m_CellStarts; // into m_SortedBodies, by cell, one more at the end
	std::vector<uint32_t> m_SortedBodies;
	std::vector<std::pair<uint32_t, uint32_t>> m_Pairs;
	std::vector<Contact> m_Contacts;
};
} // namespace demo
