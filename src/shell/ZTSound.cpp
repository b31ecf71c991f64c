#include "ZTSound.h"

#ifdef ZENTRAIL_HAVE_MULTIMEDIA
#include <QSoundEffect>
#include <QUrl>
#endif

namespace zentrail {

struct TZTSoundPlayer::Impl {
#ifdef ZENTRAIL_HAVE_MULTIMEDIA
  std::unique_ptr<QSoundEffect> Effect;
  QString Source;
#endif
};

TZTSoundPlayer::TZTSoundPlayer() : FImpl(std::make_unique<Impl>()) {}
TZTSoundPlayer::~TZTSoundPlayer() = default;

void TZTSoundPlayer::Play(const QString& fileName) {
  if (fileName.isEmpty()) return;
#ifdef ZENTRAIL_HAVE_MULTIMEDIA
  // Made on first use: a viewer that never wakes up never opens the audio device.
  if (!FImpl->Effect) FImpl->Effect = std::make_unique<QSoundEffect>();
  if (FImpl->Source != fileName) {
    FImpl->Source = fileName;
    FImpl->Effect->setSource(QUrl::fromLocalFile(fileName));
  }
  FImpl->Effect->play();
#endif
}

}  // namespace zentrail
