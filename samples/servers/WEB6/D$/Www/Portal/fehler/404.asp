<% Response.Status = "404 Not Found" %>
