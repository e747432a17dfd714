#pragma once

#include <vector>

#include "cutting/job/cut_job.h"

/// The ink of registration marks. All that paints a mark uses these outlines.
///
///        corner             cross             circle
///
///        ##                   #                .##.
///        ##                   #               ######
///        ##                #######            ######
///        #######              #                *##*
///        x#######             #
///
///  `center` is the corner's outer tip (x), and the middle of the others.
namespace rastrel::cutting {

/// Width of the bars of a corner or cross: a tenth of its size, but 0.3 mm at least and 1 mm at
/// most. A mark that is smaller than that is one bar.
[[nodiscard]] double BarWidthOf(const RegistrationMark& mark);

/// Closed contours that are filled, without overlaps; a circle is of four curves.
[[nodiscard]] std::vector<Contour> InkOf(const RegistrationMark& mark);

/// Around the ink.
[[nodiscard]] Box BoxOf(const RegistrationMark& mark);

}  // namespace rastrel::cutting
