# A row of the table from a product's record.

def two_digits: "0\(.)"[-2:];

# Seconds are single precision in the records: five decimals hold what there is.
def seconds:
  ((. * 1e5 + 0.5 | floor) as $steps | [$steps, 5999999] | min) as $steps
  | ($steps / 1e5 | floor | two_digits) + "." + ("0000\($steps % 100000)"[-5:]);

.view as $view
| ($view.imageDataFormat == "COSAR") as $complex
| [
    .product,
    $view.productVariant,
    ($view.polLayer | join(" ")),
    "\($view.sceneStartYear)-\($view.sceneStartMonth | two_digits)-\($view.sceneStartDay | two_digits)"
      + "T\($view.sceneStartHour | two_digits):\($view.sceneStartMinute | two_digits)"
      + ":\($view.sceneStartSecond | seconds)Z",
    $view.lookDirection,
    .info.layers[0].height,
    .info.layers[0].width,
    (if $complex then $view.projectedSpacingAzimuth else $view.columnSpacing end),
    (if $complex then $view.projectedSpacingSlantRange else $view.rowSpacing end),
    .centre.latitude,
    .centre.longitude,
    $view.sceneAverageHeight,
    (.info.layers[0].mapInfo // {}).projection,
    $view.calFactor,
    (.info.layers | map(.name) | join(" ")),
    (.check.findings | length)
  ]
| @csv
