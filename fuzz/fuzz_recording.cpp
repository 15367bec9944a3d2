// Feeds arbitrary bytes to the recording reader (Recording::loadFromBytes,
// the code behind Recording::load) and plays what it read with the playback
// engine: seeks to the start, the middle, the end and beyond, then a run at
// full speed on a clock the input cannot stall. Checks what must always
// hold: positions never decrease, frames are found again by their position,
// and every frame's events and values can be read back.
#include "QuietMessages.h"
#include "Recording.h"
#include "SignalPlaybackEngine.h"

#include <QByteArray>
#include <QCoreApplication>

#include <cstdint>
#include <cstdlib>

namespace {

void checkFrames(const Recording &recording)
{
    double previous = 0.0;
    for (int i = 0; i < recording.frameCount(); ++i) {
        const double position = recording.positionAt(i);
        if (i > 0 && position < previous)
            std::abort();
        previous = position;
        if (recording.indexAtOrAfter(position) > i)
            std::abort();
        const int values = recording.valueFrameUpTo(i);
        if (values > i || (values >= 0 && recording.valuesAt(values).isEmpty()))
            std::abort();
        const PlaybackFrame frame = recording.frameAt(i);
        if (frame.values.isEmpty() && frame.states.isEmpty() && frame.errors.isEmpty() && frame.messages.isEmpty())
            std::abort(); // a line that carries nothing adds no frame
    }
    if (recording.frameCount() > 0 && recording.duration() != previous)
        std::abort();
}

void play(const Recording &recording)
{
    SignalPlaybackEngine engine;
    engine.setSliderSteps(1000);
    qint64 now = 0;
    engine.setClockSource([&now] { return now; });
    engine.load(recording);
    const double duration = engine.duration();
    for (const double t : {0.0, duration / 2, duration, duration + 1.0, -1.0})
        engine.seek(t);
    engine.reset();
    engine.setPlaybackRate(100.0);
    engine.start();
    // A few ticks of 100 s of the recording each: bounded work, however far
    // the recorded times jump.
    for (int tick = 0; tick < 8 && engine.isPlaying(); ++tick) {
        now += 1000;
        engine.tick();
    }
    engine.seek(duration);
    engine.tick();
}

} // namespace

// The engine's timer needs the application's event dispatcher. The
// application gets an argument list of its own: the fuzzer's options are not for it.
extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    quietQtMessages();
    static int argc = 1;
    static char name[] = "fuzz_recording";
    static char *argv[] = {name, nullptr};
    static QCoreApplication app(argc, argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    Recording recording;
    if (!recording.loadFromBytes(QByteArray(reinterpret_cast<const char *>(data), qsizetype(size))))
        std::abort(); // bytes in memory are always readable
    checkFrames(recording);
    play(recording);
    return 0;
}
