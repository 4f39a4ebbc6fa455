#pragma once

#include <objbase.h>

namespace brisolte::testing {

/// What the calling thread's COM apartment is when this is made.
class ApartmentState {
 public:
  ApartmentState() : result_(CoGetApartmentType(&type_, &qualifier_)) {}

  friend bool operator==(const ApartmentState&, const ApartmentState&) = default;

 private:
  APTTYPE type_{};
  APTTYPEQUALIFIER qualifier_{};
  HRESULT result_;
};

}  // namespace brisolte::testing
