// Skeletons that blend two clips each, in batches on the job system.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "jobsystem.h"
#include "mathtypes.h"

namespace demo
{
class CAnimation
{
public:
	explicit CAnimation( CJobSystem &jobs );

	void Update( float flSeconds );
	// The highest joint of all, so that the work has a result.
	float Top() const { return m_flTop; }

private:
	static constexpr uint32_t CHARACTERS = 160;
	static constexpr uint32_t BATCH = 20; // characters of one job
	static constexpr uint32_t JOINTS = 48;
	static constexpr uint32_t KEYS = 32;

	struct Joint
	{
		float m_flAngle = 0.0f;
		Vector m_Axis;
	};
	using Clip = std::array<std::array<float, JOINTS>, KEYS>; // angles
	struct Character
	{
		float m_flTime = 0.0f;
		float m_flBlend = 0.0f;
		uint32_t m_nClip = 0;
		std::array<Joint, JOINTS> m_Pose;
		std::array<Vector, JOINTS> m_Positions;
	};

	void AnimateBatch( uint32_t nBatch, float flSeconds );
	void SampleClips( Character &character, std::array<float, JOINTS> &first, std::array<float, JOINTS> &second ) const;
	void PlaceJoints( Character &character ) const;
	void FindTop();

	CJobSystem &m_Jobs;
	std::vector<Clip> m_Clips;
	std::vector<Character> m_Characters;
	float m_flTop = 0.0f;
};
} // namespace demo
