#include "frame/library_state.h"

namespace specific::oracle::frame {

CLibraryState& CLibraryState::instance() {
  static CLibraryState state;
  return state;
}

}  // namespace specific::oracle::frame
