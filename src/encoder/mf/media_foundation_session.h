#pragma once

#include "common/com_apartment.h"
#include "common/hresult_failure.h"
#include "encoder/mf/media_foundation.h"

namespace brisolte {

/// COM, single-threaded, and Media Foundation started for the thread that makes it, until it is destroyed on
/// that same thread; everything made with them is released before. What did not start has an ERROR line, and
/// what comes after it is not tried.
class MediaFoundationSession {
 public:
  /// Borrows `platform`.
  explicit MediaFoundationSession(MediaFoundation& platform)
      : platform_(platform),
        apartment_(COINIT_APARTMENTTHREADED),
        started_(SucceededOrLog(apartment_.result(), "Failed to initialize COM: ") &&
                 SucceededOrLog(platform.Startup(), "Failed to initialize Media Foundation: ")) {}
  MediaFoundationSession(const MediaFoundationSession&) = delete;
  MediaFoundationSession& operator=(const MediaFoundationSession&) = delete;
  ~MediaFoundationSession() {
    if (started_) {
      SucceededOrLog(platform_.Shutdown(), "Failed to shut down Media Foundation: ");
    }
  }

  bool started() const { return started_; }

 private:
  MediaFoundation& platform_;
  const ComApartment apartment_;
  const bool started_;
};

}  // namespace brisolte
