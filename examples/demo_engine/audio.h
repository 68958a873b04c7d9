// Mixes voices into a stereo buffer: oscillators, a filter each, an echo over all, a limiter at the end.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "mathtypes.h"

namespace demo
{
class CAudio
{
public:
	CAudio();

	// Mixes what is heard in that time. flBusy from 0 to 1 is how many of the voices play.
	void Mix( float flSeconds, float flBusy );
	// The loudest sample so far, so that the work has a result.
	float Peak() const { return m_flPeak; }

private:
	static constexpr uint32_t VOICES = 64;
	static constexpr uint32_t SAMPLE_RATE = 48000;
	static constexpr uint32_t MAX_SAMPLES = SAMPLE_RATE / 10; // of one call
	static constexpr size_t ECHO = 9600;

	struct Voice
	{
		float m_flPhase = 0.0f;
		float m_flStep = 0.0f; // of the phase, for a sample
		float m_flFilter = 0.0f;
		float m_flCutoff = 0.1f;
		float m_flLoudness = 0.0f;
		float m_flSide = 0.5f; // 0 is left
	};

	void ChooseVoices( float flBusy );
	void MixVoice( Voice &voice, size_t nSamples );
	void AddEcho( size_t nSamples );
	void Limit( size_t nSamples );

	CRandom m_Random{ 31 };
	std::array<Voice, VOICES> m_Voices;
	std::vector<uint32_t> m_Playing;
	std::vector<float> m_Left;
	std::vector<float> m_Right;
	std::vector<float> m_Mono; // of one voice
	std::vector<float> m_Echo;
	size_t m_nEchoAt = 0;
	float m_flGain = 1.0f;
	float m_flPeak = 0.0f;
	float m_flPending = 0.0f; // part of a sample that is left over
};
} // namespace demo
