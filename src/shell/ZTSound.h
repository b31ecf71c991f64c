#pragma once
// The wake-up sound: a wave file played asynchronously. Without Qt Multimedia, or without a sound
// device, there is silence and nothing else.

#include <QString>
#include <memory>

namespace zentrail {

class TZTSoundPlayer {
 public:
  TZTSoundPlayer();
  ~TZTSoundPlayer();
  void Play(const QString& fileName);

 private:
  struct Impl;
  std::unique_ptr<Impl> FImpl;
};

}  // namespace zentrail
