"""A client of the media unit's player service, to copy into a user interface: this folder is all of it."""

from .browsing import BrowseFailed, ListItem, Listing
from .client import Client, is_current
from .connection import ConnectionLost, Notification, Reply, Request, ServiceError
from .contract import METHODS, NOTIFICATIONS, TrackInfo
from .picture import Cover, cut_jpeg, to_cover

__all__ = [
    "METHODS", "NOTIFICATIONS", "BrowseFailed", "Client", "ConnectionLost", "Cover", "ListItem", "Listing",
    "Notification", "Reply", "Request", "ServiceError", "TrackInfo", "cut_jpeg", "is_current", "to_cover"]
