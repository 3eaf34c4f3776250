"""What single rows of the annotation's format are known for, stated by hand and not taken from the tables:
bounds with odd ends, like-named members that differ, repeats with counts, spellings, version differences.

Each fact is a document of one class, whole in all its optional parts, with one change made to it, and what
reading it must give. The tables say the same; a fact guards them against a slip of the pen.
"""
from dataclasses import dataclass

import fragments
from fragments import Element

ALL = ("3.4", "3.5", "4.0")
BOOLEAN = "true"


@dataclass
class Fact:
    behaviour: str
    class_name: str
    change: object          # takes the Element apart
    code: int = 0
    name: str = None        # as reported; None: the class's element
    versions: tuple = ALL


# --- Changes -------------------------------------------------------------------------------------

def nothing(_):
    pass


def value(name, text):
    def change(element):
        next(c for c in element.children if c.name == name).text = fragments.escape(text)
    return change


def text(content):
    def change(element):
        element.text = fragments.escape(content)
    return change


def attribute(name, content):
    """Sets an attribute, or takes it away."""
    def change(element):
        element.attributes = [(n, t) for n, t in element.attributes if n != name]
        if content is not None:
            element.attributes.append((name, content))
    return change


def count(name, number):
    """As many of an element at its place."""
    def change(element):
        names = [c.name for c in element.children]
        first = names.index(name)
        own = element.children[first]
        rest = [c for c in element.children[first:] if c.name != name]
        element.children = element.children[:first] + [own] * number + rest
    return change


def swap(one, other):
    def change(element):
        names = [c.name for c in element.children]
        i, j = names.index(one), names.index(other)
        element.children[i], element.children[j] = element.children[j], element.children[i]
    return change


def before(name, extra):
    def change(element):
        place = [c.name for c in element.children].index(name)
        element.children.insert(place, extra)
    return change


def last(extra):
    def change(element):
        element.children.append(extra)
    return change


def only(*names, content):
    """Exactly these children, each with the same text."""
    def change(element):
        element.children = [Element(name, text=content) for name in names]
    return change


def rename(name, other):
    def change(element):
        for child in element.children:
            if child.name == name:
                child.name = other
    return change


# --- Facts ---------------------------------------------------------------------------------------

def shared_and_components():
    yield Fact("mission before itemName", "c_generalHeader", swap("itemName", "mission"), 21, "itemName")
    yield Fact("an unknown element before a required one", "c_generalHeader",
               before("source", Element("foreign")), 21, "source")
    yield Fact("an unknown element with optional ones left", "c_generalHeader",
               before("referenceDocument", Element("foreign")), 10)
    yield Fact("two branches exchanged", "c_level1Product", swap("setup", "processing"), 21, "setup")
    yield Fact("a second header", "c_level1Product", count("generalHeader", 2), 21, "productComponents")
    yield Fact("three noises", "c_level1Product", count("noise", 3))
    yield Fact("no noise", "c_level1Product", count("noise", 0), 21, "noise")
    for branch in ("productComponents", "productInfo", "productSpecific", "setup", "processing", "instrument",
                   "calibration", "platform"):
        followed = {"productComponents": "productInfo", "productInfo": "productSpecific",
                    "productSpecific": "setup", "setup": "processing", "processing": "instrument",
                    "instrument": "calibration", "calibration": "noise", "platform": "productQuality"}
        yield Fact(f"a second {branch}", "c_level1Product", count(branch, 2), 21, followed[branch])
    yield Fact("a second productQuality", "c_level1Product", count("productQuality", 2), 10)
    yield Fact("a header without fileName", "c_generalHeader", attribute("fileName", None), 25)
    for optional in ("fileVersion", "status"):
        yield Fact(f"a header without {optional}", "c_generalHeader", attribute(optional, None))
    yield Fact("fileName of 128 characters", "c_generalHeader", attribute("fileName", "x" * 128))
    yield Fact("fileName of 129 characters", "c_generalHeader", attribute("fileName", "x" * 129), 19)
    yield Fact("mission of 20 characters", "c_generalHeader", value("mission", "x" * 20))
    yield Fact("mission of 21 characters", "c_generalHeader", value("mission", "x" * 21), 19, "mission")
    yield Fact("remark of 1025 characters", "c_generalHeader", value("remark", "x" * 1025), 19, "remark")
    yield Fact("a file without location", "c_file", count("location", 0), 21, "location")
    yield Fact("a file without size", "c_file", count("size", 0), 21, "size")
    yield Fact("size of 2^63 - 1", "c_file", value("size", "9223372036854775807"))
    yield Fact("size of 2^63", "c_file", value("size", "9223372036854775808"), 36, "size")
    yield Fact("size below -2^63", "c_file", value("size", "-9223372036854775809"), 37, "size")
    yield Fact("a polynomial without coefficients", "c_dblPolynom", count("coefficient", 0))
    yield Fact("256 coefficients", "c_dblPolynom", count("coefficient", 256))
    yield Fact("257 coefficients", "c_dblPolynom", count("coefficient", 257), 10)
    yield Fact("polynomialDegree of 2^32 - 1", "c_dblPolynom", value("polynomialDegree", "4294967295"))
    yield Fact("polynomialDegree of 2^32", "c_dblPolynom", value("polynomialDegree", "4294967296"), 36,
               "polynomialDegree")
    yield Fact("exponent of -1", "c_dblPolynom_coefficient", attribute("exponent", "-1"), 37)
    for vector in ("c_dblVector", "c_floatVector"):
        yield Fact("x, y, z", vector, only("x", "y", "z", content="1"))
        yield Fact("y before x", vector, only("y", "x", "z", content="1"), 21, "x")
        for missing in "xyz":
            left = [n for n in "xyz" if n != missing]
            yield Fact(f"no {missing}", vector, only(*left, content="1"), 21, missing)
    yield Fact("a bad token among good ones", "c_imageData", value("DRAoffset", "SRA none DRAFore"), 38,
               "DRAoffset")
    yield Fact("blanks around and between tokens", "c_imageData", value("DRAoffset", "  SRA \t DRAFore\n"))
    yield Fact("DRA is an antenna, no offset", "c_imageData", value("DRAoffset", "DRA"), 38, "DRAoffset")
    yield Fact("an undefined polarisation", "c_imageData", value("polLayer", "UNDEFINED"))


def product_info():
    yield Fact("no imaging mode", "c_imagingModeSpecificInfo", only("foreign", content=""), 31, "foreign")
    for chosen in ("c_stripMap", "c_scanSAR", "c_spotLight"):
        other = "spotLight" if chosen == "c_stripMap" else "stripMap"
        yield Fact("two imaging modes", "c_imagingModeSpecificInfo",
                   lambda e, o=other: e.children.append(Element(o)), 10)
        yield Fact("a mode's class of its own", chosen, nothing)
    yield Fact("absOrbit of -1", "c_missionInfo", value("absOrbit", "-1"))
    yield Fact("absOrbit of -2", "c_missionInfo", value("absOrbit", "-2"), 37, "absOrbit")
    yield Fact("absOrbit of 2^31", "c_missionInfo", value("absOrbit", "2147483648"), 36, "absOrbit")
    yield Fact("relOrbit of -2", "c_missionInfo", value("relOrbit", "-2"))
    lists = {"c_generationInfo": {"groundOperationsType": "operational test"},
             "c_missionInfo": {"orbitDirection": "ASCENDING DESCENDING"},
             "c_acquisitionInfo": {"imagingMode": "SM SL SC HS", "antennaReceiveConfiguration": "SRA DRA",
                                   "polarisationMode": "SINGLE QUAD"},
             "c_productVariantInfo": {"productVariant": "SSC MGD", "projection": "MAP SLANTRANGE",
                                      "mapProjection": "UTM UPS", "resolutionVariant": "SE RE"},
             "c_imageDataInfo": {"imageDataType": "COMPLEX DETECTED",
                                 "imageStorageOrder": "ROWBYROW COLBYCOL"}}
    for owner, members in lists.items():
        for member, tokens in members.items():
            yield Fact(f"{member} is a list", owner, value(member, tokens))
            yield Fact(f"{member} is a list, checked by tokens", owner, value(member, tokens + " none"), 38,
                       member)
    for owner, member, texts in (("c_acquisitionInfo", "lookDirection", "LEFT RIGHT"),
                                 ("c_qualityInfo", "qualityInspection", "AUTO_APPROVED NOT_APPROVED"),
                                 ("c_productVariantInfo", "radiometricCorrection", "CALIBRATED UNDEFINED"),
                                 ("c_imageDataInfo", "imageDataFormat", "GEOTIFF COSAR")):
        yield Fact(f"{member} is compared whole", owner, value(member, texts), 38, member)
    for owner, member, limit in (("c_qualityInfo", "qualityInspection", 255),
                                 ("c_productVariantInfo", "radiometricCorrection", 128),
                                 ("c_imageDataInfo", "imageDataFormat", 255)):
        yield Fact(f"{member} is measured first", owner, value(member, "x" * (limit + 1)), 19, member)
        yield Fact(f"{member} is compared then", owner, value(member, "x" * limit), 38, member)
    for spacing in ("c_rowSpacing", "c_columnSpacing"):
        yield Fact("units of a raster", spacing, attribute("units", "s m"))
        yield Fact("no units", spacing, attribute("units", None))
        yield Fact("foreign units of a raster", spacing, attribute("units", "km"), 38)
    yield Fact("more layers than rasters", "c_imageDataInfo", value("numberOfLayers", "77"))


def product_specific_and_setup():
    yield Fact("no complexImageInfo", "c_productSpecific", count("complexImageInfo", 0), 21, "complexImageInfo")
    for optional in ("projectedImageInfo", "geocodedImageInfo"):
        yield Fact(f"no {optional}", "c_productSpecific", count(optional, 0))
    yield Fact("a projected spacing", "c_complexImageInfo_projectedSpacingRange",
               only("groundNear", "groundFar", "slantRange", content="1.5"))
    yield Fact("a coordinate type of 128 characters", "c_complexImageInfo",
               value("imageCoordinateType", "x" * 128), 38, "imageCoordinateType")
    yield Fact("a coordinate type of 129 characters", "c_complexImageInfo",
               value("imageCoordinateType", "x" * 129), 19, "imageCoordinateType")
    yield Fact("two coordinate types", "c_complexImageInfo", value("imageCoordinateType", "RAW ZERODOPPLER"),
               38, "imageCoordinateType")
    for member in ("imageDataStartWith", "quicklookDataStartWith"):
        yield Fact(f"{member} is a list", "c_complexImageInfo", value(member, "EARLYAZNEARRG LATEAZFARRG"))
    for member in ("refRow", "refCol"):
        yield Fact(f"{member} of 2^63 - 1", "c_gridReferenceTime", value(member, "9223372036854775807"))
    for member in ("numberOfRows", "numberOfColumns"):
        yield Fact(f"{member} of 2^31", "c_mappingGridInfo_imageRaster", value(member, "2147483648"), 36,
                   member)
    yield Fact("no ordered scene", "c_orderedScene", only("foreign", content=""), 31, "foreign")
    yield Fact("a second ordered scene", "c_orderedScene", last(Element("sceneExtent")), 10)
    yield Fact("orbitAccuracy of an order", "c_orderInfo", value("orbitAccuracy", "UNDEFINED"))
    yield Fact("orbitAccuracy of an order has no limit", "c_orderInfo", value("orbitAccuracy", "x" * 21), 38,
               "orbitAccuracy")
    yield Fact("orbitAccuracy of the input", "c_inputData", value("orbitAccuracy", "UNDEFINED"), 38,
               "orbitAccuracy")
    yield Fact("orbitAccuracy of the input has a limit", "c_inputData", value("orbitAccuracy", "x" * 21), 19,
               "orbitAccuracy")
    for text_ in ("GROUNDRANGE", "SLANTRANGE", "UNDEFINED", "MAP"):
        yield Fact("projections of an order", "c_orderInfo", value("projection", text_))
        yield Fact("projections of a product", "c_productVariantInfo", value("projection", text_))
    yield Fact("AUTO in an order", "c_geocodingOrder", value("mapProjection", "AUTO"))
    yield Fact("AUTO in a product", "c_productVariantInfo", value("mapProjection", "AUTO"), 38, "mapProjection")
    for added in (Element("userData"), Element("procGainAttenuation", text="1.5")):
        yield Fact(f"{added.name} in 3.4", "c_orderInfo", last(added), 10, versions=("3.4",))
    yield Fact("procGainAttenuation", "c_orderInfo", value("procGainAttenuation", "1.5"),
               versions=("3.5", "4.0"))
    yield Fact("user data of 3.5", "c_userData",
               only("customerOrderItemID", "acquisitionOrderID", "assocName", content="x" * 3000),
               versions=("3.5",))
    yield Fact("user data of 4.0", "c_userData",
               only("customerOrderID", "customerOrderName", "customerOrderItemID", content="x" * 3000),
               versions=("4.0",))
    yield Fact("user data of 4.0 in 3.5", "c_userData", only("customerOrderID", content="x"), 10,
               versions=("3.5",))
    yield Fact("user data of 3.5 in 4.0", "c_userData", only("assocName", content="x"), 10, versions=("4.0",))
    yield Fact("all user data is optional", "c_userData", only(content=""), versions=("3.5", "4.0"))


def processing_and_instrument():
    statistics = "c_rawDataStatisticsAndCorrection"
    yield Fact("statistics of any content", statistics,
               lambda e: setattr(next(c for c in e.children if c.name == "quantisationStatistics"), "text",
                                 "<h a=\"1\">&lt;<i/></h> and text"))
    yield Fact("no statistics", statistics, count("quantisationStatistics", 0))
    yield Fact("statistics behind the correction", statistics,
               swap("quantisationStatistics", "appliedCorrectionID"), 10)
    yield Fact("appliedCorrectionID is a list", statistics, value("appliedCorrectionID", "DEFAULTS ANALYSIS"))
    for number in (1, 2):
        for member in ("amplCorrection", "phaseCorrection"):
            yield Fact(f"{number} {member}", "c_pulseCorrection", count(member, number))
    yield Fact("a third amplCorrection", "c_pulseCorrection", count("amplCorrection", 3), 21, "phaseCorrection")
    for cls in ("c_amplCorrection", "c_phaseCorrection"):
        for effect in ("short", "long"):
            yield Fact(f"a {effect} effect", cls, attribute("timeEffect", effect))
        yield Fact("another effect", cls, attribute("timeEffect", "Short"), 38)
        yield Fact("no effect", cls, attribute("timeEffect", None), 25)
    yield Fact("five gaps announced, none there", "c_dataGapInfo",
               lambda e: (value("numberOfGaps", "5")(e), count("dataGap", 0)(e)))
    yield Fact("blocks are not counted", "c_rawDataInfo", value("numberOfRawDataBlocks", "9"))
    yield Fact("an unchecked channel", "c_burstSequence", value("polChannel", "anything at all" * 100))
    yield Fact("no polChannel", "c_burstSequence", count("polChannel", 0))
    yield Fact("an unchecked instrument channel", "c_blockInfo", value("instrumentChannel", "anything" * 100))
    yield Fact("no instrument channel", "c_blockInfo", count("instrumentChannel", 0), 21, "instrumentChannel")

    yield Fact("a window length in lower case", "c_settingRecord", nothing)
    yield Fact("a window length in upper case", "c_settingRecord",
               rename("echowindowLength", "echoWindowLength"), 21, "echowindowLength")
    yield Fact("a gain without code", "c_rxGain", attribute("code", None))
    yield Fact("a gain's long code", "c_rxGain", attribute("code", "x" * 5000))
    for cls in ("c_rxBandwidth", "c_RSF", "c_PRF", "c_echoWindowPosition", "c_echowindowLength"):
        yield Fact("no code", cls, attribute("code", None), 25)
        yield Fact("a code of 20 characters", cls, attribute("code", "x" * 20))
        yield Fact("a code of 21 characters", cls, attribute("code", "x" * 21), 19)
    yield Fact("a pulse type of the instrument", "c_settingRecord", value("pulseType", "x" * 21), 19,
               "pulseType")
    yield Fact("a pulse type of a chirp", "c_referenceChirp", value("pulseType", "x" * 80))
    yield Fact("a longer pulse type of a chirp", "c_referenceChirp", value("pulseType", "x" * 81), 19,
               "pulseType")
    for number in ("numberOfRxGainChanges", "numberOfSettingRecords"):
        yield Fact(f"{number} is not counted", "c_settings", value(number, "99"))


def calibration_and_platform():
    yield Fact("one I-Q-Characteristics", "c_ADCandIQCharacteristics", count("I-Q-Characteristics", 1), 21)
    yield Fact("no I-Q-Characteristics", "c_ADCandIQCharacteristics",
               only("foreign", content=""), 21, "I-Q-Characteristics")
    yield Fact("two of the same channel", "c_ADCandIQCharacteristics", count("I-Q-Characteristics", 2))
    yield Fact("three I-Q-Characteristics", "c_ADCandIQCharacteristics", count("I-Q-Characteristics", 3), 10)
    for channel in ("I", "Q"):
        yield Fact(f"channel {channel}", "c_I_Q_Characteristics", attribute("channel", channel))
    yield Fact("channel i", "c_I_Q_Characteristics", attribute("channel", "i"), 38)
    yield Fact("non-orthogonality", "c_I_Q_Characteristics",
               only("bias", "imbalance", "non-orthogonality", content="0.5"))
    yield Fact("non_orthogonality", "c_I_Q_Characteristics",
               rename("non-orthogonality", "non_orthogonality"), 21, "non-orthogonality")
    yield Fact("one crosstalk", "c_polarimetricChannelCorrection", count("crosstalk", 1), 21)
    yield Fact("two crosstalks", "c_polarimetricChannelCorrection", count("crosstalk", 2))
    yield Fact("three crosstalks", "c_polarimetricChannelCorrection", count("crosstalk", 3), 10)
    for polarisation, code in (("H2V", 0), ("V2H", 0), ("HV", 38)):
        yield Fact(f"crosstalk {polarisation}", "c_crosstalk", attribute("polarisation", polarisation), code)
    for number, code in ((1, 0), (4, 0), (5, 10)):
        yield Fact(f"{number} internal delays", "c_totalInstrumentTimeDelay", count("internalDelay", number),
                   code)
    yield Fact("no internal delay", "c_totalInstrumentTimeDelay", count("internalDelay", 0), 21,
               "internalDelay")
    yield Fact("an undefined channel of a delay", "c_internalDelay",
               attribute("polarisationChannel", "UNDEFINED"), 38)
    yield Fact("a constant without layer", "c_calibrationConstant", attribute("layerIndex", None))
    yield Fact("a constant's layer is a text", "c_calibrationConstant", attribute("layerIndex", "first"))
    yield Fact("a noise without layer", "c_noise", attribute("layerIndex", None), 25)
    yield Fact("a noise's layer is a number", "c_noise", attribute("layerIndex", "first"), 35)
    yield Fact("a noise's layer may be negative", "c_noise", attribute("layerIndex", "-1"))
    for cls in ("c_gainExt", "c_azimuthPattern_gainExt"):
        yield Fact("a gain at an angle", cls, nothing)
        yield Fact("a gain without angle", cls, attribute("angle", None), 25)
        yield Fact("a gain at a word", cls, attribute("angle", "steep"), 35)
    yield Fact("300 images of noise", "c_noise", count("imageNoise", 300))
    yield Fact("300 estimates of noise", "c_imageNoise", nothing)
    yield Fact("no image of noise", "c_noise", count("imageNoise", 0), 21, "imageNoise")
    yield Fact("left and right", "c_absCalFactor", attribute("lookDirection", "left right"))
    yield Fact("LEFT of a factor", "c_absCalFactor", attribute("lookDirection", "LEFT"), 38)
    yield Fact("channels of a factor", "c_absCalFactor", attribute("polarisationChannel", " HH  VV\tHV VH "))

    for header in ("c_orbitHeader", "c_attitudeHeader"):
        yield Fact("the misspelt transformation", header, nothing)
        yield Fact("the transformation spelt well", header,
                   rename("coordSystemTransfrom", "coordSystemTransform"), 21,
                   {"c_orbitHeader": "stateVectorRefTime", "c_attitudeHeader": "attitudeDataRefTime"}[header],
                   ("3.5", "4.0"))
    for name in ("num", "maneuver", "qualInd"):
        for cls in ("c_stateVec", "c_attitudeData"):
            yield Fact(f"no {name} in 3.4", cls, attribute(name, None), versions=("3.4",))
            yield Fact(f"no {name}", cls, attribute(name, None), 25, versions=("3.5", "4.0"))
    yield Fact("no antsteerInd in 3.4", "c_attitudeData", attribute("antsteerInd", None), versions=("3.4",))
    yield Fact("no antsteerInd", "c_attitudeData", attribute("antsteerInd", None), 25, versions=("3.5", "4.0"))
    for name in ("generationSystem", "stateVectorRefFrame", "stateVectorRefTime", "stateVecFormat"):
        yield Fact(f"no {name} in 3.4", "c_orbitHeader", count(name, 0), versions=("3.4",))
        yield Fact(f"no {name}", "c_orbitHeader", count(name, 0), 21, name, ("3.5", "4.0"))
    for cls in ("c_stateVec", "c_attitudeData"):
        yield Fact("num of 0", cls, attribute("num", "0"), 37)
        yield Fact("num of 1", cls, attribute("num", "1"))
        yield Fact("num of 2^64 - 1", cls, attribute("num", "18446744073709551615"))
        yield Fact("num of 2^64", cls, attribute("num", "18446744073709551616"), 36)
        for quality, code in (("0", 0), ("1", 0), ("2", 36), ("-1", 37)):
            yield Fact(f"qualInd of {quality}", cls, attribute("qualInd", quality), code)
        yield Fact("timeGPS of 2^64 - 1", cls, value("timeGPS", "18446744073709551615"))
    for cls, member in (("c_orbitHeader", "recPolDegree"), ("c_attitudeHeader", "recInterpolPolDegree")):
        for degree, code in (("0", 37), ("1", 0), ("20", 0), ("21", 36)):
            yield Fact(f"{member} of {degree}", cls, value(member, degree), code, member)
    for member, most in (("SARAntennaPosition", 3), ("GPSAntennaPosition", 4)):
        yield Fact(f"no {member}", ANTENNAS, count(member, 0), 21, member)
        yield Fact(f"{most} of {member}", ANTENNAS, count(member, most))
    yield Fact("a fourth SARAntennaPosition", ANTENNAS, count("SARAntennaPosition", 4), 21,
               "GPSAntennaPosition")
    yield Fact("a fifth GPSAntennaPosition", ANTENNAS, count("GPSAntennaPosition", 5), 10)
    yield Fact("an antenna without DRAoffset", "c_SARAntennaPosition", attribute("DRAoffset", None), 25)
    yield Fact("offsets of an antenna", "c_SARAntennaPosition", attribute("DRAoffset", "SRA DRAFore DRAAft"))
    for cls, member in (("c_firstStateTime", "firstStateTimeGPS"), ("c_lastStateTime", "lastStateTimeGPS")):
        yield Fact(f"{member} of 2^32 - 1", cls, value(member, "4294967295"))
        yield Fact(f"{member} of 2^32", cls, value(member, "4294967296"), 36, member)
    yield Fact("attitude by AOCS", "c_attitudeHeader", value("sensor", "AOCS"))
    yield Fact("attitude by PROP", "c_attitudeHeader", value("sensor", "PROP"), 38, "sensor")
    yield Fact("orbit by AOCS", "c_orbitHeader", value("sensor", "AOCS"), 38, "sensor")


ANTENNAS = "c_referenceData"


def quality_and_scene():
    yield Fact("four raw data qualities", "c_productQuality", count("rawDataQuality", 4))
    yield Fact("five raw data qualities", "c_productQuality", count("rawDataQuality", 5), 21, "auxDataQuality")
    yield Fact("no raw data quality", "c_productQuality", count("rawDataQuality", 0), 21, "rawDataQuality")
    yield Fact("many image qualities", "c_productQuality", count("imageDataQuality", 30))
    yield Fact("no image quality", "c_productQuality", count("imageDataQuality", 0), 21, "imageDataQuality")
    for number in (0, 4):
        yield Fact(f"{number} raw data limits", "c_limits", count("rawData", number))
    yield Fact("five raw data limits", "c_limits", count("rawData", 5), 21, "processing")
    yield Fact("polarization with a z", "c_rawDataQuality", value("polarization", "anything"),
               versions=("4.0",))
    yield Fact("polarisation with an s", "c_rawDataQuality", rename("polarization", "polarisation"), 21,
               "gapSignificanceFlag", versions=("4.0",))
    for flag in ("dopplerOutsideLimitsFlags", "dopplerDriftOutsideLimitsFlags"):
        yield Fact(f"{flag[:-1]} in the singular", "c_processingParameterQuality", rename(flag, flag[:-1]), 21,
                   flag)

    yield Fact("three corners", "c_sceneInfo", count("sceneCornerCoord", 3), 21)
    yield Fact("no corner", "c_sceneInfo", count("sceneCornerCoord", 0), 21, "sceneCornerCoord")
    yield Fact("four corners", "c_sceneInfo", count("sceneCornerCoord", 4))
    yield Fact("five corners", "c_sceneInfo", count("sceneCornerCoord", 5), 21, "headingAngle")
    coordinates = {"c_sceneCenterCoord": ("lat", "lon"), "c_sceneCornerCoord": ("lat", "lon"),
                   "c_orderedScene_sceneCenterCoord": ("lat", "lon"),
                   "c_sceneLocalisationAccuracy": ("latError", "lonError")}
    for cls, (lat, lon) in coordinates.items():
        yield from bounded(cls, lat, "90")
        yield from bounded(cls, lon, "180")
    yield Fact("a range extent before 4.0", "c_sceneInfo",
               before("sceneCenterCoord", Element("sceneRangeExtent", text="1")), 21, "sceneCenterCoord",
               ("3.4", "3.5"))
    yield Fact("no range extent", "c_sceneInfo", count("sceneRangeExtent", 0), versions=("4.0",))
    for cls in ("c_sceneCenterCoord", "c_sceneCornerCoord"):
        for member in ("refRow", "refColumn"):
            yield Fact(f"no {member}", cls, count(member, 0))
    for cls in ("c_previewInfo_quicklooks_imageRaster_rowSpacing",
                "c_previewInfo_quicklooks_imageRaster_columnSpacing"):
        yield Fact("any units of a quicklook", cls, attribute("units", "km and more" * 50))
    for member in ("columnBlockLength", "rowBlockLength"):
        yield Fact(f"no {member}", "c_previewInfo_quicklooks_imageRaster", count(member, 0), 21, member)


def bounded(cls, member, limit):
    yield Fact(f"{member} at its ends", cls, value(member, limit))
    yield Fact(f"{member} at its ends", cls, value(member, "-" + limit))
    yield Fact(f"{member} beyond", cls, value(member, limit + ".5"), 36, member)
    yield Fact(f"{member} below", cls, value(member, f"-{limit}.5"), 37, member)
    yield Fact(f"{member} infinite", cls, value(member, "INF"), 36, member)
    yield Fact(f"{member} no number", cls, value(member, "NaN"), 37, member)


def geocoded_and_parameters():
    corners = ("upperLeft", "upperRight", "lowerRight", "lowerLeft")
    geographic = [corner + axis for corner in corners for axis in ("Longitude", "Latitude")]
    projected = [corner + axis for corner in corners for axis in ("Easting", "Northing")]
    for cls in ("c_frameCoordsGeographic", "c_sceneCoordsGeographic"):
        yield Fact("corners in their order", cls, only(*geographic, content="10.5"))
        yield Fact("latitude first", cls, only(geographic[1], geographic[0], *geographic[2:], content="10.5"),
                   21, "upperLeftLongitude")
        for member in geographic:
            yield from bounded(cls, member, "180" if member.endswith("Longitude") else "90")
    for member, limit in (("centerCoordLongitude", "180"), ("centerCoordLatitude", "90")):
        yield from bounded("c_sceneCenterCoordsGeographic", member, limit)
    for member, limit in (("longitude", "180"), ("latitude", "90")):
        yield from bounded("c_projectionCenter", member, limit)
    for cls in ("c_frameCoordsCartographic", "c_sceneCoordsCartographic"):
        yield Fact("corners in their order", cls, only(*projected, content="5400000.5"))
        yield Fact("northing first", cls, only(projected[1], projected[0], *projected[2:], content="1"), 21,
                   "upperLeftEasting")
    yield Fact("a version of 80 characters", "c_DEM_DB_ContentVersion", text("x" * 80))
    yield Fact("a version of 81 characters", "c_DEM_DB_ContentVersion", text("x" * 81), 19)
    yield Fact("a grid without raster", "c_geocodedImageInfo_mappingGridInfo", count("imageRaster", 0), 21,
               "imageRaster")
    yield Fact("a grid without raster", "c_mappingGridInfo", count("imageRaster", 0), 21, "imageRaster")
    for cls in ("c_incidenceAngleMaskDescription", "c_DEMCoverageMapDescription"):
        yield Fact("a description without raster", cls, count("imageRaster", 0))

    yield Fact("a velocity before 4.0", "c_geometry", before("dopplerRate", Element("zeroDopplerVelocity")),
               21, "dopplerRate", ("3.4", "3.5"))
    for number in (0, 5):
        yield Fact(f"{number} velocities", "c_geometry", count("zeroDopplerVelocity", number),
                   versions=("4.0",))
        yield Fact(f"{number} delays", "c_processingParameter", count("correctedInstrumentDelay", number),
                   versions=("4.0",))
    yield Fact("a delay before 4.0", "c_processingParameter",
               before("scanSARBeamOverlap", Element("correctedInstrumentDelay")), 10, versions=("3.4", "3.5"))
    yield Fact("a combined polynomial without coefficients", "c_combinedDoppler", count("coefficient", 0), 21,
               "coefficient")
    for number, code in ((1, 0), (256, 0), (257, 10)):
        yield Fact(f"{number} combined coefficients", "c_combinedDoppler", count("coefficient", number), code)
    for geometric in (0, 1):
        for flag in ("true", "false"):
            yield Fact(f"{geometric} geometric polynomials, flag {flag}", "c_dopplerEstimate",
                       lambda e, n=geometric, f=flag: (value("geometricDopplerFlag", f)(e),
                                                       count("geometricDoppler", n)(e)))
    yield Fact("no geometric flag", "c_dopplerEstimate", count("geometricDopplerFlag", 0), 21,
               "geometricDopplerFlag")
    flags = """RXGainCorrectedFlag DRAChannelSyncFlag DRAChannelDemixingPerformedFlag hybridCouplerCorrectedFlag
        chirpDriftCorrectedFlag chirpReplicaUsedFlag geometricDopplerUsedFlag noiseCorrectedFlag
        rangeSpreadingLossCorrectedFlag scanSARBeamCorrectedFlag spotLightBeamCorrectedFlag
        azimuthPatternCorrectedFlag elevationPatternCorrectedFlag polarisationCorrectedFlag detectedFlag
        multiLookedFlag propagationEffectsCorrectedFlag geocodedFlag incidenceAngleMaskGeneratedFlag
        nominalProcessingPerformedFlag""".split()
    assert len(flags) == 20
    yield Fact("twenty flags in their order", "c_processingFlags", only(*flags, content=BOOLEAN))
    for i, flag in enumerate(flags):
        yield Fact(f"no {flag}", "c_processingFlags", only(*flags[:i], *flags[i + 1:], content=BOOLEAN), 21, flag)


def all_facts():
    for group in (shared_and_components, product_info, product_specific_and_setup, processing_and_instrument,
                  calibration_and_platform, quality_and_scene, geocoded_and_parameters):
        yield from group()
