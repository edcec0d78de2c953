#pragma once

// Everything a host needs: include this header and link the velmora library.

#include <velmora/ASMWriter.h>
#include <velmora/BGLCommand.h>
#include <velmora/BGLCommandList.h>
#include <velmora/BGLObject.h>
#include <velmora/BGLOpcodeDictionary.h>
#include <velmora/BoundingBox.h>
#include <velmora/Condition.h>
#include <velmora/ConditionList.h>
#include <velmora/DrawListSink.h>
#include <velmora/Error.h>
#include <velmora/GuardAnalysis.h>
#include <velmora/Host.h>
#include <velmora/IndexKey.h>
#include <velmora/KeyedCollection.h>
#include <velmora/MDLHeader.h>
#include <velmora/MDLObject.h>
#include <velmora/MaterialList.h>
#include <velmora/ModelList.h>
#include <velmora/OpenFlightWriter.h>
#include <velmora/OpenGLPreviewObject.h>
#include <velmora/PreviewSurface.h>
#include <velmora/Scenario.h>
#include <velmora/TextureList.h>
#include <velmora/Version.h>
#include <velmora/Vertex.h>
#include <velmora/VertexList.h>
#include <velmora/View.h>
#include <velmora/Windows1252.h>
#include <velmora/XMLBGLSection.h>
#include <velmora/XMLBGLSectionList.h>
#include <velmora/color.h>
#include <velmora/material.h>
#include <velmora/seasonalTextures.h>
#include <velmora/texture.h>
