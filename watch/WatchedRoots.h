#pragma once

#include <map>
#include <string>
#include <vector>

#include "documents/ManagedDocument.h"
#include "platform/EventStream.h"
#include "workspace/ManagedWorkspace.h"

// What is to be watched for the open workspaces and documents. All paths are normalised.

// Every workspace root, and the folder of every open document that lies in none of them; of a document that a link
// below these leads to, the folder in which its file is as well. Sorted ascending.
std::vector<std::string> watchedRoots(const std::map<std::string, ManagedWorkspace>& workspacesByRootPath,
                                      const std::map<std::string, ManagedDocument>& documentsByID);

// What the client looks at: the listings and the documents that it has.
EventStreamInterest watchedInterest(const std::vector<std::string>& rootPaths,
                                    const std::map<std::string, ManagedWorkspace>& workspacesByRootPath,
                                    const std::map<std::string, ManagedDocument>& documentsByID);
