// binning/binning.cpp: xsearchsorted

#include "host/entry.hpp"

namespace arrayfold {

// required: finished as it stands; the first argument is checked and nothing is searched.
Outcome xsearchsorted(const Call& call) { return check_one_object(call); }

}  // namespace arrayfold
